// Operands: from the record to exact integers, and on to binary values.
#pragma once

#include "oci_calc_number/engine.h"
#include "oci_calc_number/real.h"
#include "oci_calc_number/tables.h"

namespace calc {

// +-m * 10^(8 pos), m < 10^48 < 2^160: a finite operand that came from a number.
struct Decimal {
    u64 m[3];
    int pos;
    bool negative;
};

// Reads a finite non-zero record. False when it does not come from a number: more
// limbs than 20 base-100 digits take, or positions out of their range, which is
// wider at the low end: digits behind zeros in front count less than 10^-128.
inline bool read(Decimal &d, const QZCICalcNumber &n) {
    const int count = limb_count(n);
    if (count < 1 || count > max_number_limbs || n.data_part[count - 1] == 0 ||
        n.start_pos > max_number_pos || n.end_pos < min_power)
        return false;
    d.pos = n.end_pos;
    d.negative = is_negative(n);
    const ub4 *const limb = n.data_part;
    u64 pair[3] = {};
    for (int i = 0; i < count; ++i) pair[i / 2] += i % 2 != 0 ? u64{limb[i]} * limb_base : limb[i];
    const u128 t = static_cast<u128>(pair[2]) * word_base + pair[1];
    u128 p = static_cast<u128>(low(t)) * word_base + pair[0];
    d.m[0] = low(p);
    p = static_cast<u128>(high(t)) * word_base + high(p);
    d.m[1] = low(p);
    d.m[2] = high(p);
    return true;
}

// |x - d| for x the value of a Decimal with m = 1 at position 0, as a Decimal. False
// when d has more than 6 limbs of fraction or is 10^8 or above: then d is nowhere near 1.
inline bool distance_to_one(Decimal &r, const Decimal &d) {
    if (d.pos < -6 || d.pos > 0) return false;
    u64 one[3] = {1, 0, 0};
    for (int i = d.pos; i < 0; ++i) mul_1<3>(one, one, limb_base);
    r.pos = d.pos;
    r.negative = compare<3>(d.m, one) < 0;
    if (r.negative)
        sub<3>(r.m, one, d.m);
    else
        sub<3>(r.m, d.m, one);
    return true;
}

// Relative error below 2^-operand_bits<N>: the power of ten is cut off by 1 ulp at most,
// the product by less than 1 after normalization.
template <int N>
inline constexpr int operand_bits = 64 * N - 3;
template <int N>
inline void to_real(Real<N> &r, const Decimal &d) {
    r.negative = d.negative;
    Limbs<N + 3> product;
    mul<3, N>(product, d.m, power_mantissa[d.pos - min_power] + 16 - N);
    if (is_zero<N + 3>(product)) return set_zero(r);
    r.exp = power_exp(d.pos) + 192 - normalize<N + 3>(product);
    copy<N>(r.m, product + 3);
}

}  // namespace calc
