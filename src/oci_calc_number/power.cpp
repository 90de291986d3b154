// Powers: base^exponent = e^(exponent * ln base), and the ties that no width settles.
#include "oci_calc_number/engine.h"
#include "oci_calc_number/kernels.h"
#include "oci_calc_number/rounding.h"

namespace calc {
namespace {

// |x| = 2^twos * 5^fives * rest, rest an integer not divisible by 2 and 5.
struct Factored {
    u64 rest[3];
    int twos;
    int fives;
};

// m /= w when that leaves no remainder.
bool divide_exactly(u64 *m, u64 w) {
    u64 q[3], remainder = 0;
    for (int i = 2; i >= 0; --i) {
        const u128 part = static_cast<u128>(remainder) << 64 | m[i];
        q[i] = low(part / w);
        remainder = low(part % w);
    }
    if (remainder != 0) return false;
    copy<3>(m, q);
    return true;
}

Factored factor(const Decimal &x) {
    Factored f = {{x.m[0], x.m[1], x.m[2]}, 8 * x.pos, 8 * x.pos};
    while (divide_exactly(f.rest, 2)) ++f.twos;
    while (divide_exactly(f.rest, 5)) ++f.fives;
    return f;
}

bool is_one(const u64 *m) { return m[0] == 1 && (m[1] | m[2]) == 0; }

// r = base^n; false when it does not fit three limbs.
bool small_power(u64 *r, const u64 *base, u64 n) {
    r[0] = 1;
    r[1] = r[2] = 0;
    if (is_one(base)) return true;
    for (u64 i = 0; i < n; ++i) {
        u64 product[6];
        mul<3, 3>(product, r, base);
        if ((product[3] | product[4] | product[5]) != 0) return false;
        copy<3>(r, product);
    }
    return true;
}

// The n-th root of m, n >= 1, when it is an integer.
bool exact_root(u64 *root, const u64 *m, u64 n) {
    clear<3>(root);
    for (int bit = 191; bit >= 0; --bit) {  // n = 1 needs up to 160 bits
        u64 trial[3], power[3];
        copy<3>(trial, root);
        trial[bit / 64] |= u64{1} << (bit % 64);
        if (small_power(power, trial, n) && compare<3>(power, m) <= 0) copy<3>(root, trial);
    }
    u64 power[3];
    return small_power(power, root, n) && compare<3>(power, m) == 0;
}

// Whether |x|^y is exactly `tie`. With y = p/q in lowest terms x^p = tie^q: the exponents
// of 2 and 5 agree, and the rest of x is z^q, that of tie z^p, for one integer z. As x has
// 40 digits, z > 1 allows q <= 84, and z = 1 leaves q to divide exponents below 2^9; so q,
// whose primes are 2 and 5, divides 10^8, and y has at most 8 decimals.
bool is_power(const Decimal &x, const Decimal &y, const Decimal &tie) {
    if (y.pos < -1 || y.pos > 0 || (y.m[1] | y.m[2]) != 0) return false;
    u64 p = y.m[0], q = y.pos < 0 ? limb_base : 1;
    if (p / q > 4096) return false;  // |y| beyond what 2^y, 5^y allow in the range
    while (p % 2 == 0 && q % 2 == 0) p /= 2, q /= 2;
    while (p % 5 == 0 && q % 5 == 0) p /= 5, q /= 5;
    const Factored a = factor(x), b = factor(tie);
    const sb8 signed_p = y.negative ? -static_cast<sb8>(p) : static_cast<sb8>(p);
    if (a.twos * signed_p != b.twos * static_cast<sb8>(q) ||
        a.fives * signed_p != b.fives * static_cast<sb8>(q))
        return false;
    if (is_one(a.rest) || is_one(b.rest)) return is_one(a.rest) && is_one(b.rest);
    if (y.negative || q > 160 || p > 160) return false;
    u64 root[3], power[3];
    return exact_root(root, a.rest, q) && small_power(power, root, p) &&
           compare<3>(power, b.rest) == 0;
}

// The tie above |down|, a value of at most 20 base-100 digits: half a unit of its 20th
// digit more. 41 digits fit Decimal's 48.
bool tie_above(Decimal &tie, const QZCICalcNumber &down) {
    if (down.is_zero || is_infinite(down) || !read(tie, down)) return false;
    // The 21st digit stands in the fifth limb below the top one; the more digits the top
    // limb has, the further from that limb's right end.
    const int tie_pos = down.start_pos - 5;
    for (; tie.pos > tie_pos; --tie.pos) mul_1<3>(tie.m, tie.m, limb_base);
    u64 half = 50;
    for (int i = top_digits(down.data_part[limb_count(down) - 1]); i > 1; --i) half *= 100;
    add_1<3>(tie.m, tie.m, half);
    return true;
}

// |x|^y for finite x other than 0, 1, -1 and finite y other than 0.
sword power(QZCICalcNumber &result, const Decimal &x, const Decimal &y, bool negative) {
    Decimal magnitude = x;
    magnitude.negative = false;
    // t = y ln x: the logarithm's relative error and 2 more of 2^-real_bits, times
    // |t| < 2^9, give the result's.
    constexpr int bits = ln_bits<4> - 9 - 2;
    static_assert(bits < exp_bits<4> - 1);
    Real<4> t, f;
    ln(t, magnitude);
    to_real(f, y);
    mul(t, t, f);
    if (!is_zero(t) && t.exp > 9) {
        if (t.negative)
            set_zero(result);
        else
            set_infinity(result, negative);
        return OCI_SUCCESS;
    }
    exp(f, t);
    f.negative = negative;
    if (round_to_record(result, f, bits)) return OCI_SUCCESS;

    // Close to a tie: round_to_record goes down to the neighbour below it.
    Decimal tie;
    round_to_record(result, f, bits, Undecided::toward_zero);
    if (tie_above(tie, result) && is_power(magnitude, y, tie)) {
        round_to_record(result, f, bits, Undecided::away_from_zero);
        return OCI_SUCCESS;
    }
    Wide wide_t, wide_f;
    ln(wide_t, magnitude);
    to_real(wide_f, y);
    mul(wide_t, wide_t, wide_f);
    exp(wide_f, wide_t);
    wide_f.negative = negative;
    constexpr int wide_bits = ln_bits<wide_limbs> - 9 - 2;
    round_to_record(result, wide_f, wide_bits, Undecided::nearest);
    return OCI_SUCCESS;
}

enum class Parity { even, odd, fraction };

Parity parity(const QZCICalcNumber &n) {
    if (n.is_zero || is_infinite(n) || n.end_pos > 0) return Parity::even;
    if (n.end_pos < 0) return Parity::fraction;
    return n.data_part[0] % 2 != 0 ? Parity::odd : Parity::even;
}

// |x| compared with 1, for x not zero.
int compare_to_one(const QZCICalcNumber &x) {
    if (is_infinite(x)) return 1;
    if (x.start_pos != 0) return x.start_pos < 0 ? -1 : 1;
    return limb_count(x) == 1 && x.data_part[0] == 1 ? 0 : 1;
}

sword infinite_power(QZCICalcNumber &result, const QZCICalcNumber &base,
                     const QZCICalcNumber &exponent, bool negative) {
    const int order = base.is_zero ? -1 : compare_to_one(base);
    if (order == 0)
        set_small(result, false, 1);
    else if ((order > 0) == is_negative(exponent))
        set_zero(result);
    else
        set_infinity(result, negative);
    return OCI_SUCCESS;
}

}  // namespace
}  // namespace calc

using namespace calc;

sword QZCICalcNumPower(const QZCICalcNumber *base, const QZCICalcNumber *exponent,
                       QZCICalcNumber *result) {
    if (exponent->is_zero) {
        set_small(*result, false, 1);
        return OCI_SUCCESS;
    }
    if (base->is_zero) {
        if (is_negative(*exponent)) return OCI_ERROR;
        set_zero(*result);
        return OCI_SUCCESS;
    }
    const Parity kind = parity(*exponent);
    if (is_negative(*base) && kind == Parity::fraction) return OCI_ERROR;
    const bool negative = is_negative(*base) && kind == Parity::odd;
    if (is_infinite(*base) || is_infinite(*exponent))
        return infinite_power(*result, *base, *exponent, negative);
    if (compare_to_one(*base) == 0) {
        set_small(*result, negative, 1);
        return OCI_SUCCESS;
    }
    Decimal x, y;
    if (!read(x, *base) || !read(y, *exponent)) return OCI_ERROR;
    return power(*result, x, y, negative);
}

sword QZCICalcNumIntPower(const QZCICalcNumber *base, sword exp, QZCICalcNumber *result) {
    QZCICalcNumber exponent;
    const sb8 wide_exp = exp;
    const ub8 magnitude = static_cast<ub8>(wide_exp < 0 ? -wide_exp : wide_exp);
    exponent.data_part[0] = static_cast<ub4>(magnitude % limb_base);
    exponent.data_part[1] = static_cast<ub4>(magnitude / limb_base);
    set_trimmed(exponent, exp < 0, 0, 2);
    return QZCICalcNumPower(base, &exponent, result);
}
