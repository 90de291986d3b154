// The generated constant tables; tools/tables/generate.py writes and explains them.
#pragma once

#include "oci_calc_number/binary/limbs.h"

namespace calc {

#include "oci_calc_number/binary/tables/atan.inc"
#include "oci_calc_number/binary/tables/exp.inc"
#include "oci_calc_number/binary/tables/ln.inc"
#include "oci_calc_number/binary/tables/powers_of_ten.inc"
#include "oci_calc_number/binary/tables/trig.inc"

inline constexpr int min_power = -24;  // of 10^8, in power_mantissa
inline constexpr int max_power = 24;
inline constexpr int min_turns = -8;  // power of 10^8 of the first entry of turns
inline constexpr int max_turns = 15;

static_assert(sizeof power_mantissa / sizeof power_mantissa[0] == max_power - min_power + 1);
static_assert(sizeof turns / sizeof turns[0] == max_turns - min_turns + 1);

// The top N limbs of an entry.
template <int N, size_t Width>
inline const u64 *top_limbs(const u64 (&entry)[Width]) {
    static_assert(N <= int{Width});
    return entry + Width - N;
}

// Of 10^(8k)'s mantissa.
template <int N>
inline const u64 *power_of_group(int k) {
    return top_limbs<N>(power_mantissa[k - min_power]);
}
// 10^(8k) is power_mantissa[k - min_power] times 2 to this; log2_10 / 2^16 is log2(10)
// closely enough for all k of the table.
constexpr int power_exp(int k) {
    constexpr int log2_10 = 217706;
    return (8 * k * log2_10 >> 16) + 1;
}

}  // namespace calc
