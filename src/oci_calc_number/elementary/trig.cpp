// Sine, cosine and tangent.
#include "oci_calc_number/binary/rounding.h"
#include "oci_calc_number/elementary/kernels.h"
#include "oci_calc_number/record.h"

namespace calc {

// |x| = m * 10^(8 pos): the fraction of m * turns, where turns is the fraction of
// 10^(8 pos) / (2 pi), whole turns dropped [Payne, Hanek: Radian reduction for
// trigonometric functions, 1983]. turns is cut off by 1 unit of limb N + 3, which
// m < 2^160 makes less than 2^-32 ulps; cutting the fraction of a quadrant off to N limbs
// adds 1 ulp.
template <int N>
void reduce(Angle<N> &angle, const Operand &x) {
    constexpr int W = N + 3;
    const u64 *const t = top_limbs<W>(turns[x.pos - min_turns]);
    Limbs<W> fraction;
    mul_1<W>(fraction, t, x.m[0]);
    add_mul_1<W - 1>(fraction + 1, t, x.m[1]);
    add_mul_1<W - 2>(fraction + 2, t, x.m[2]);
    angle.quadrant = static_cast<unsigned>(fraction[W - 1] >> 62);
    shift_left<W>(fraction, fraction, 2);
    copy<N>(angle.f, fraction + 3);
}

template void reduce<3>(Angle<3> &, const Operand &);
template void reduce<4>(Angle<4> &, const Operand &);
template void reduce<wide_limbs>(Angle<wide_limbs> &, const Operand &);

// f = i/2^9 + t: sin(a + d) = sin a - sin a (1 - cos d) + cos a sin d and its like, with
// a = pi/2 i/2^9 from the table and Taylor's series in t^2 for sin d and 1 - cos d,
// d = pi/2 t < 2^-8. Above pi/4, sine and cosine change places. Errors in ulps of half the
// result: table 1, two products 2N each, series 2N each, f 4: 2^6, below 2^-sin_cos_bits.
template <int N>
void sin_cos(Real<N> *s, Real<N> *c, const Angle<N> &angle) {
    Limbs<N> t;
    copy<N>(t, angle.f);
    const bool swap = t[N - 1] >> 63 != 0;
    if (swap) negate<N>(t);  // 1 - f
    const auto &entry = sin_cos_half[t[N - 1] >> 55];
    const u64 *const cos_a = top_limbs<N>(entry), *const sin_a = cos_a - std::size(entry) / 2;
    t[N - 1] &= (u64{1} << 55) - 1;

    // The first missing terms, t^19 and t^20 or t^23 and t^24, are below 2^-215 or 2^-262.
    constexpr int degree = N == 3 ? 8 : 10;
    Limbs<N> square, sin_d, vers_d;
    mul_high<N>(square, t, t);
    horner<N, 18, true, degree>(sin_d, square, sine_coefficient);
    mul_high<N>(sin_d, sin_d, t);
    shift_left<N>(sin_d, sin_d, 1);
    horner<N, 18, true, degree>(vers_d, square, versine_coefficient);
    mul_high<N>(vers_d, vers_d, square);
    shift_left<N>(vers_d, vers_d, 1);

    Limbs<N> sum, p;
    if (Real<N> *const sine = swap ? c : s) {
        mul_high<N>(p, sin_a, vers_d);
        sub<N>(sum, sin_a, p);
        mul_high<N>(p, cos_a, sin_d);
        add<N>(sum, sum, p);
        set_fraction<N>(*sine, sum, 1, false);
    }
    if (Real<N> *const cosine = swap ? s : c) {
        mul_high<N>(p, cos_a, vers_d);
        sub<N>(sum, cos_a, p);
        mul_high<N>(p, sin_a, sin_d);
        sub<N>(sum, sum, p);
        set_fraction<N>(*cosine, sum, 1, false);
    }
}

template void sin_cos<3>(Real<3> *, Real<3> *, const Angle<3> &);
template void sin_cos<4>(Real<4> *, Real<4> *, const Angle<4> &);

void sin_cos(Wide *s, Wide *c, const Angle<wide_limbs> &angle) {
    Limbs<wide_limbs> f;
    copy<wide_limbs>(f, angle.f);
    const bool swap = f[wide_limbs - 1] >> 63 != 0;
    if (swap) negate<wide_limbs>(f);  // 1 - f
    Wide r, half_pi;
    set_fraction<wide_limbs>(r, f, 0, false);
    set_constant(half_pi, quarter_pi, 1);
    mul(r, r, half_pi);
    Wide sine, cosine;
    sin_cos_radians(sine, cosine, r);
    if (s != nullptr) *s = swap ? cosine : sine;
    if (c != nullptr) *c = swap ? sine : cosine;
}

// Taylor's series: some 170 terms of 3 operations each.
void sin_cos_radians(Wide &s, Wide &c, const Wide &r) {
    Wide term;
    set_int(term, 1);
    c = term;
    set_zero(s);
    for (u64 n = 1; n < 256; ++n) {
        mul(term, term, r);
        div_1(term, term, n);
        if (is_zero(term) || term.exp < r.exp - 64 * wide_limbs) break;
        Wide &sum = n % 2 != 0 ? s : c;
        add(sum, sum, term, n % 4 >= 2);
    }
}

template <int N>
int trig_value(Real<N> &r, Trig function, const Operand &x) {
    Angle<N> angle;
    reduce(angle, x);
    const unsigned q = angle.quadrant;
    Real<N> sine, cosine;
    // cppcheck-suppress uninitvar ; sin_cos writes what is asked for
    Real<N> *const s = function == Trig::cosine ? nullptr : &sine;
    // cppcheck-suppress uninitvar
    Real<N> *const c = function == Trig::sine ? nullptr : &cosine;
    // sin(a + pi/2) = cos a, cos(a + pi/2) = -sin a
    sin_cos(q % 2 != 0 ? c : s, q % 2 != 0 ? s : c, angle);
    sine.negative = (q >= 2) != x.negative;
    cosine.negative = q == 1 || q == 2;
    // Absolute errors become relative ones by the values' leading zeros.
    const auto bits = [](const Real<N> &v) { return sin_cos_bits<N> + v.exp - 1; };
    if (function != Trig::tangent) {
        r = function == Trig::sine ? sine : cosine;
        return bits(r);
    }
    if (is_zero(cosine)) {
        r = cosine;
        return 0;
    }
    div(r, sine, cosine);
    return (sine.exp < cosine.exp ? bits(sine) : bits(cosine)) - 2;
}

template int trig_value<3>(Real<3> &, Trig, const Operand &);
template int trig_value<4>(Real<4> &, Trig, const Operand &);
template int trig_value<wide_limbs>(Wide &, Trig, const Operand &);

namespace {

sword compute(QZCICalcNumber &result, Trig function, const QZCICalcNumber &operand) {
    if (is_infinite(operand)) return OCI_ERROR;
    if (is_tiny(operand)) {
        if (function == Trig::cosine)
            set_integer(result, false, 1);
        else
            copy(result, operand);
        return OCI_SUCCESS;
    }
    Operand x;
    if (!read(x, operand)) return OCI_ERROR;
    round_by_passes(result, [&](auto &r) { return trig_value(r, function, x); });
    return OCI_SUCCESS;
}

}  // namespace
}  // namespace calc

sword QZCICalcNumSinWithRound(const QZCICalcNumber *operand, QZCICalcNumber *result) {
    return calc::compute(*result, calc::Trig::sine, *operand);
}

sword QZCICalcNumCosWithRound(const QZCICalcNumber *operand, QZCICalcNumber *result) {
    return calc::compute(*result, calc::Trig::cosine, *operand);
}

sword QZCICalcNumTanWithRound(const QZCICalcNumber *operand, QZCICalcNumber *result) {
    return calc::compute(*result, calc::Trig::tangent, *operand);
}
