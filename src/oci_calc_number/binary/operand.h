// Operands: from the record to exact integers, and on to binary values.
#pragma once

#include "oci_calc_number/binary/real.h"
#include "oci_calc_number/binary/tables.h"
#include "oci_calc_number/record.h"

namespace calc {

// +-m * 10^(8 pos), m < 10^48 < 2^160 not divisible by 10^8: a finite operand.
struct Operand {
    u64 m[3];
    int pos;
    bool negative;
};

// An integer of 24 digits as three limbs.
inline void to_limbs(u64 *m, const digit_words::Joined &j) {
    const u128 t = static_cast<u128>(j.word[0]) * digit_words::word_base + j.word[1];
    u128 p = static_cast<u128>(low(t)) * digit_words::word_base + j.word[2];
    m[0] = low(p);
    p = static_cast<u128>(high(t)) * digit_words::word_base + high(p);
    m[1] = low(p);
    m[2] = high(p);
}

// Reads a finite non-zero record of 21 digits at most. False for exponents that no number
// has: the range is wider at the low end, as digits behind zeros in front count less than
// 10^-128.
inline bool read(Operand &x, const QZCICalcNumber &n) {
    constexpr int lowest = number_bytes::min_exponent - int{number_bytes::max_digits};
    const int exponent = exponent_of(n);
    if (exponent < lowest || exponent > number_bytes::max_exponent) return false;
    // The first digit of a group has a power of 100 that is 3 modulo 4; the last group used
    // is moved to the window's end.
    const Digits d = digits_of(n);
    const int skip = 3 - (exponent & 3);
    const int used = (skip + static_cast<int>(significant(d)) + 3) & ~3;
    const int back = int{digit_words::window} - used + skip;
    to_limbs(x.m, join(moved_back(d, static_cast<unsigned>(back))));
    x.pos = (exponent + skip + 1 - used) / 4;
    x.negative = is_negative(n);
    return true;
}

inline bool is_one(const Operand &x) { return x.pos == 0 && x.m[0] == 1 && (x.m[1] | x.m[2]) == 0; }

// |x| - 1 with its sign, exactly. False when |x| has more than 48 digits of fraction or is
// 10^8 or above: then it is nowhere near 1.
inline bool distance_to_one(Operand &r, const Operand &x) {
    constexpr int most_groups = 6;
    if (x.pos < -most_groups || x.pos > 0) return false;
    u64 one[3] = {1, 0, 0};
    for (int i = x.pos; i < 0; ++i) mul_1<3>(one, one, digit_words::group_base);
    r.pos = x.pos;
    r.negative = compare<3>(x.m, one) < 0;
    if (r.negative)
        sub<3>(r.m, one, x.m);
    else
        sub<3>(r.m, x.m, one);
    return true;
}

// Relative error below 2^-operand_bits<N>: the power of ten is cut off by 1 ulp at most,
// the product by less than 1 after normalization.
template <int N>
inline constexpr int operand_bits = 64 * N - 3;
template <int N>
inline void to_real(Real<N> &r, const Operand &x) {
    r.negative = x.negative;
    Limbs<N + 3> product;
    mul<3, N>(product, x.m, power_of_group<N>(x.pos));
    if (is_zero<N + 3>(product)) return set_zero(r);
    r.exp = power_exp(x.pos) + 192 - normalize<N + 3>(product);
    copy<N>(r.m, product + 3);
}

}  // namespace calc
