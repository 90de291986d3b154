// Arc sine, arc cosine, arc tangent of one and of two operands.
#include <algorithm>

#include "oci_calc_number/binary/rounding.h"
#include "oci_calc_number/elementary/kernels.h"
#include "oci_calc_number/record.h"

namespace calc {
namespace {

// Turns the point (x, y), 0 <= y/x < 2^(8 - Shift), by the table's largest angle
// atan(i/2^Shift) below its own, which leaves y/x < 2^-Shift (1 + 2^-28), and adds that
// angle to the sum. Errors: 1 ulp in each of x, y and the sum. Returns whether it turned.
template <int N, int Shift, size_t Count, size_t Width>
bool turn(u64 *y, u64 *x, u64 *sum, const u64 (&level)[Count][Width]) {
    const u64 i = y[N - 1] / ((x[N - 1] >> Shift) + 1);
    if (i == 0) return false;
    Limbs<N> dx, dy;
    mul_fraction_1<N>(dx, y, i << (64 - Shift));
    mul_fraction_1<N>(dy, x, i << (64 - Shift));
    add<N>(x, x, dx);
    sub<N>(y, y, dy);
    add<N>(sum, sum, top_limbs<N>(level[i]));
    return true;
}

// atan(y/x) for 0 < y <= x: three turns, then u - u^3/3 + u^5/5 - ... with u = y/x below
// 2^-24. Errors in ulps, with x in [1/16, 1/4] and 4 in each of x and y: 2^6 in u, 3 in the
// tables, 2N in the series, 8 from those of x and y before; all in a sum of 2^-24 or more,
// so below 2^-atan_bits. Without any turn, u and the result have full relative precision.
template <int N>
void atan_below_1(Real<N> &r, const Real<N> &y, const Real<N> &x) {
    Limbs<N> num, den, sum = {};
    shift_right<N>(den, x.m, 3);
    shift_right_any<N>(num, y.m, x.exp - y.exp + 3);
    // The first level's i is y/x in units of 2^-8, 2^8 - 1 at most.
    bool turned = turn<N, 8>(num, den, sum, atan_level_1);
    turned |= turn<N, 16>(num, den, sum, atan_level_2);
    turned |= turn<N, 24>(num, den, sum, atan_level_3);

    Real<N> u, cubic;
    if (turned) {
        Real<N> a, b;
        set_fraction<N>(a, num, 0, false);
        set_fraction<N>(b, den, 0, false);
        div(u, a, b);
    } else {
        div(u, y, x);
    }
    u.negative = false;
    Limbs<N> t, square, p;
    to_fraction<N>(t, u);
    mul_high<N>(square, t, t);
    // Up to u^7 or u^11; the first missing term is below 2^-195 u or 2^-291 u.
    horner<N, 47, true, N == 3 ? 2 : 4>(p, square, atan_coefficient);
    mul_high<N>(p, p, square);
    if (turned) {
        mul_high<N>(p, p, t);
        sub<N>(t, t, p);
        add<N>(sum, sum, t);
        set_fraction<N>(r, sum, 0, false);
    } else {
        set_fraction<N>(cubic, p, 0, false);
        mul(cubic, cubic, u);
        sub(r, u, cubic);
    }
}

}  // namespace

template <int N>
void atan_quotient(Real<N> &r, const Real<N> &y, const Real<N> &x) {
    if (compare_magnitude(y, x) <= 0) return atan_below_1(r, y, x);
    Real<N> t, half_pi;
    atan_below_1(t, x, y);
    set_constant(half_pi, quarter_pi, 1);
    sub(r, half_pi, t);
}

template void atan_quotient<3>(Real<3> &, const Real<3> &, const Real<3> &);
template void atan_quotient<4>(Real<4> &, const Real<4> &, const Real<4> &);

// With t from the kernel of 4 limbs, the angle between the point and that of t has the tangent
// u = (y cos t - x sin t) / (x cos t + y sin t) below 2^-220 t, and its series ends after
// u^3/3: u^5 < 2^-1100 t. The differences cancel all but 2^-220 t of the terms: 2^-780 of
// u, or 2^-1000 of t, remain.
void atan_quotient(Wide &r, const Wide &y, const Wide &x) {
    const bool swap = compare_magnitude(y, x) > 0;
    const Wide &num = swap ? x : y, &den = swap ? y : x;
    Real<4> t, a, b;
    set_width(a, num);
    set_width(b, den);
    a.negative = b.negative = false;
    atan_below_1(t, a, b);
    Wide wide_t, s, c, n, d, p;
    set_width(wide_t, t);
    sin_cos_radians(s, c, wide_t);
    Wide num_1 = num, den_1 = den;
    num_1.negative = den_1.negative = false;
    mul(n, num_1, c);
    mul(p, den_1, s);
    sub(n, n, p);
    mul(d, den_1, c);
    mul(p, num_1, s);
    add(d, d, p);
    div(n, n, d);
    mul(p, n, n);
    mul(p, p, n);
    div_1(p, p, 3);
    sub(n, n, p);
    add(r, wide_t, n);
    if (swap) {
        Wide half_pi;
        set_constant(half_pi, quarter_pi, 1);
        sub(r, half_pi, r);
    }
}

namespace {

// A multiple of pi/4, for the axes and diagonals: none is next to a midpoint.
sword round_pi(QZCICalcNumber &result, u64 quarters, bool negative) {
    Real<4> pi, factor;
    set_constant(pi, quarter_pi, 0);
    set_int(factor, quarters);
    mul(pi, pi, factor);
    pi.negative = negative;
    round_to_record(result, pi, real_bits<4>, Undecided::nearest);
    return OCI_SUCCESS;
}

// The angle of the point (x, y), x and y not zero, to the error of 2^-bits.
template <int N>
void angle_of(Real<N> &r, const Real<N> &y, const Real<N> &x) {
    Real<N> pi, y1 = y, x1 = x;
    y1.negative = x1.negative = false;
    atan_quotient(r, y1, x1);
    if (x.negative) {
        set_constant(pi, quarter_pi, 2);
        sub(r, pi, r);
    }
    r.negative = y.negative;
}

// 1 - x^2 = (1 - |x|)(1 + |x|), the factors exact in decimal: |x| <= 1.
template <int N>
void cosine_side(Real<N> &r, const Operand &x) {
    Operand magnitude = x, distance;
    magnitude.negative = false;
    Real<N> a, one;
    to_real(a, magnitude);
    set_int(one, 1);
    Real<N> sum;
    add(sum, one, a);
    if (distance_to_one(distance, magnitude))
        to_real(r, distance);
    else
        sub(r, one, a);  // |x| has digits below 10^-48, so none above 10^-8
    r.negative = false;
    mul(r, r, sum);
    sqrt(r, r);
}

}  // namespace

// sqrt's error counts as it is, the rest twice at most.
template <int N>
int arc_value(Real<N> &r, Arc function, const Operand &x) {
    Real<N> side, a;
    cosine_side(side, x);
    to_real(a, x);
    if (function == Arc::sine)
        angle_of(r, a, side);
    else
        angle_of(r, side, a);
    return std::min(sqrt_bits<N>, atan_bits<N>) - 2;
}

template int arc_value<3>(Real<3> &, Arc, const Operand &);
template int arc_value<4>(Real<4> &, Arc, const Operand &);
template int arc_value<wide_limbs>(Wide &, Arc, const Operand &);

template <int N>
int angle_value(Real<N> &r, const Operand &y, const Operand &x) {
    Real<N> a, b;
    to_real(a, y);
    to_real(b, x);
    angle_of(r, a, b);
    return atan_bits<N> - 1;
}

template int angle_value<3>(Real<3> &, const Operand &, const Operand &);
template int angle_value<4>(Real<4> &, const Operand &, const Operand &);
template int angle_value<wide_limbs>(Wide &, const Operand &, const Operand &);

namespace {

sword compute(QZCICalcNumber &result, Arc function, const QZCICalcNumber &operand) {
    if (is_infinite(operand)) return OCI_ERROR;
    if (function == Arc::sine && is_tiny(operand)) {
        copy(result, operand);
        return OCI_SUCCESS;
    }
    if (operand.is_zero) return round_pi(result, 2, false);
    const bool negative = is_negative(operand);
    if (const int order = compare_to_one(operand); order >= 0) {
        if (order > 0) return OCI_ERROR;
        if (function == Arc::sine) return round_pi(result, 2, negative);
        if (negative) return round_pi(result, 4, false);
        set_zero(result);
        return OCI_SUCCESS;
    }
    Operand x;
    if (!read(x, operand)) return OCI_ERROR;
    round_by_passes(result, [&](auto &r) { return arc_value(r, function, x); });
    return OCI_SUCCESS;
}

sword infinite_atan2(QZCICalcNumber &result, const QZCICalcNumber &y, const QZCICalcNumber &x) {
    const bool negative = is_negative(y), left = is_negative(x);
    if (is_infinite(y)) return round_pi(result, is_infinite(x) ? (left ? 3 : 1) : 2, negative);
    if (left) return round_pi(result, 4, negative);
    set_zero(result);
    return OCI_SUCCESS;
}

}  // namespace
}  // namespace calc

using namespace calc;

sword QZCICalcNumAsin(const QZCICalcNumber *operand, QZCICalcNumber *result) {
    return compute(*result, Arc::sine, *operand);
}

sword QZCICalcNumAcos(const QZCICalcNumber *operand, QZCICalcNumber *result) {
    return compute(*result, Arc::cosine, *operand);
}

sword QZCICalcNumAtan(const QZCICalcNumber *operand, QZCICalcNumber *result) {
    QZCICalcNumber one;
    set_integer(one, false, 1);
    return QZCICalcNumAtan2(operand, &one, result);
}

sword QZCICalcNumAtan2(const QZCICalcNumber *y, const QZCICalcNumber *x, QZCICalcNumber *result) {
    if (is_infinite(*y) || is_infinite(*x)) return infinite_atan2(*result, *y, *x);
    if (y->is_zero) {
        if (!x->is_zero && is_negative(*x)) return round_pi(*result, 4, false);
        set_zero(*result);
        return OCI_SUCCESS;
    }
    if (x->is_zero) return round_pi(*result, 2, is_negative(*y));
    Operand dy, dx;
    if (!read(dy, *y) || !read(dx, *x)) return OCI_ERROR;
    // A quotient q of two numbers may be a midpoint, which atan q = q (1 - q^2/3 ...) keeps
    // below. From 10^-128 on, where results are numbers, q^2/3 is above 2^-852: the
    // widest pass sees it.
    round_by_passes(*result, [&](auto &r) { return angle_value(r, dy, dx); });
    return OCI_SUCCESS;
}
