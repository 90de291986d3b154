// Powers: base^exponent = e^(exponent * ln base), and the midpoints that no width settles.
#include "oci_calc_number/binary/rounding.h"
#include "oci_calc_number/elementary/kernels.h"
#include "oci_calc_number/record.h"

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
    Limbs<3> q;
    if (div_1<3>(q, m, w) != 0) return false;
    copy<3>(m, q);
    return true;
}

Factored factor(const Operand &x) {
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

constexpr u64 max_root = 85;        // 3^86 > 10^41
constexpr u64 max_exponent = 4096;  // 2^y and 5^y have left the range long before

}  // namespace

// Whether |x|^y is exactly `v`. With y = p/q in lowest terms x^p = v^q: the exponents
// of 2 and 5 agree, and the rest of x is z^q, that of v z^p, for one integer z. x has 40
// digits and v, a midpoint, 41, so z > 1, which is 3 at least, allows p and q up to
// max_root; z = 1 leaves q to divide exponents below 2^9. So q, whose primes are 2 and 5,
// divides 10^8, and y has at most 8 decimals.
bool is_power(const Operand &x, const Operand &y, const Operand &v) {
    if (y.pos < -1 || y.pos > 0 || (y.m[1] | y.m[2]) != 0) return false;
    u64 p = y.m[0], q = y.pos < 0 ? digit_words::group_base : 1;
    if (p / q > max_exponent) return false;
    while (p % 2 == 0 && q % 2 == 0) p /= 2, q /= 2;
    while (p % 5 == 0 && q % 5 == 0) p /= 5, q /= 5;
    const Factored a = factor(x), b = factor(v);
    const sb8 signed_p = y.negative ? -static_cast<sb8>(p) : static_cast<sb8>(p);
    if (a.twos * signed_p != b.twos * static_cast<sb8>(q) ||
        a.fives * signed_p != b.fives * static_cast<sb8>(q))
        return false;
    if (is_one(a.rest) || is_one(b.rest)) return is_one(a.rest) && is_one(b.rest);
    if (y.negative || q > max_root || p > max_root) return false;
    u64 root[3], power[3];
    return exact_root(root, a.rest, q) && small_power(power, root, p) &&
           compare<3>(power, b.rest) == 0;
}

namespace {

// The midpoint above |down|, a value of at most 20 base-100 digits: half a unit of its 20th
// digit more.
bool midpoint_above(Operand &midpoint, const QZCICalcNumber &down) {
    if (down.is_zero || is_infinite(down)) return false;
    Digits d = digits_of(down);
    d.word[2] |= ub8{50} << 24;
    QZCICalcNumber n;
    set_digits(n, false, exponent_of(down), d);
    return read(midpoint, n);
}

// |y|, when it is an integer that repeated multiplication is the quickest for; else 0.
unsigned small_exponent(const Operand &y) {
    constexpr u64 limit = 1 << 16;
    return y.pos == 0 && y.m[0] < limit && (y.m[1] | y.m[2]) == 0 ? static_cast<unsigned>(y.m[0])
                                                                  : 0;
}

// x^n, or x^-n when `invert`, by squaring. Errors of 2^-real_bits in x and in each product
// enter with the power that is still to come: 2n + 2 in all. Returns the result's bits.
int integer_power(Real<3> &r, const Operand &x, unsigned n, bool invert) {
    Real<3> base, one;
    to_real(base, x);
    r = base;
    const int length = 64 - leading_zeros(n);
    for (int bit = length - 2; bit >= 0; --bit) {
        mul(r, r, r);
        if ((n >> bit & 1) != 0) mul(r, r, base);
    }
    set_int(one, 1);
    if (invert) div(r, one, r);
    return real_bits<3> - 2 - length;
}

}  // namespace

// t = y ln x: the logarithm's relative error and 2 more of 2^-real_bits, times
// |t| < 2^9, give the result's.
template <int N>
int power_value(Real<N> &r, const Operand &x, const Operand &y) {
    constexpr int max_exp = 9;
    constexpr int bits = ln_bits<N> - max_exp - 2;
    static_assert(bits + 1 < exp_bits<N>);
    Real<N> t, f;
    ln(t, x);
    to_real(f, y);
    mul(t, t, f);
    if (!is_zero(t) && t.exp > max_exp) {
        // e^512 > 10^222: out of a number's range.
        r = t;
        r.exp = t.negative ? -(1 << 10) : 1 << 10;
        r.negative = false;
        return bits;
    }
    exp(r, t);
    return bits;
}

template int power_value<4>(Real<4> &, const Operand &, const Operand &);
template int power_value<wide_limbs>(Wide &, const Operand &, const Operand &);

namespace {

// |x|^y for finite x other than 0, 1, -1 and finite y other than 0, with the sign given.
sword power(QZCICalcNumber &result, const Operand &x, const Operand &y, bool negative) {
    Operand magnitude = x;
    magnitude.negative = false;
    if (const unsigned n = small_exponent(y)) {
        Real<3> r;
        const int r_bits = integer_power(r, magnitude, n, y.negative);
        r.negative = negative;
        if (round_to_record(result, r, r_bits)) return OCI_SUCCESS;
    }
    Real<4> f;
    const int bits = power_value(f, magnitude, y);
    f.negative = negative;
    if (round_to_record(result, f, bits)) return OCI_SUCCESS;

    // Close to a midpoint: round_to_record goes down to the neighbour below it.
    Operand midpoint;
    round_to_record(result, f, bits, Undecided::toward_zero);
    if (midpoint_above(midpoint, result) && is_power(magnitude, y, midpoint)) {
        round_to_record(result, f, bits, Undecided::away_from_zero);
        return OCI_SUCCESS;
    }
    Wide wide;
    const int wide_bits = power_value(wide, magnitude, y);
    wide.negative = negative;
    round_to_record(result, wide, wide_bits, Undecided::nearest);
    return OCI_SUCCESS;
}

enum class Parity { even, odd, fraction };

Parity parity(const QZCICalcNumber &n) {
    const int exponent = exponent_of(n);
    if (n.is_zero != 0 || is_infinite(n)) return Parity::even;
    const Digits d = digits_of(n), &mask = integer_mask(exponent);
    for (int i = 0; i < 3; ++i) {
        if ((d.word[i] & ~mask.word[i]) != 0) return Parity::fraction;
    }
    if (exponent >= int{digit_words::window}) return Parity::even;
    return digit_at(d, static_cast<unsigned>(exponent)) % 2 != 0 ? Parity::odd : Parity::even;
}

sword infinite_power(QZCICalcNumber &result, const QZCICalcNumber &base,
                     const QZCICalcNumber &exponent, bool negative) {
    const int order = base.is_zero ? -1 : compare_to_one(base);
    if (order == 0)
        set_integer(result, false, 1);
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
        set_integer(*result, false, 1);
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
        set_integer(*result, negative, 1);
        return OCI_SUCCESS;
    }
    Operand x, y;
    if (!read(x, *base) || !read(y, *exponent)) return OCI_ERROR;
    return power(*result, x, y, negative);
}

sword QZCICalcNumIntPower(const QZCICalcNumber *base, sword exp, QZCICalcNumber *result) {
    QZCICalcNumber exponent;
    const sb8 wide_exp = exp;
    set_integer(exponent, exp < 0, static_cast<ub8>(wide_exp < 0 ? -wide_exp : wide_exp));
    return QZCICalcNumPower(base, &exponent, result);
}
