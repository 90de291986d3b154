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

// The top limbs of 10^(8k)'s mantissa.
inline const u64 *power_of_group(int k, int limbs) {
    constexpr int stored = sizeof power_mantissa[0] / sizeof(u64);
    return power_mantissa[k - min_power] + stored - limbs;
}
// 10^(8k) is power_mantissa[k - min_power] times 2 to this; 217706 / 2^16 is log2(10)
// closely enough for all k of the table.
constexpr int power_exp(int k) { return (8 * k * 217706 >> 16) + 1; }

}  // namespace calc
