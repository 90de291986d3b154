// The elementary functions on binary values, as fast kernels of 4 limbs (the logarithm
// of 4 or 8) over tables, and as wide ones of 16 limbs over plain series. The constant
// beside each is its error bound: the relative error of a result that does not cancel
// is below 2^-bits.
#pragma once

#include "oci_calc_number/decimal.h"
#include "oci_calc_number/real.h"

namespace calc {

inline constexpr int fast_limbs = 4;
inline constexpr int ln_limbs = 8;
inline constexpr int wide_limbs = 16;
using Fast = Real<fast_limbs>;
using Wide = Real<wide_limbs>;

// e^x for |x| < exp_limit_x, x with an absolute error below 2^-exp_bits of its own.
inline constexpr int exp_limit_x = 512;
inline constexpr int exp_bits = 240;
inline constexpr int exp_wide_bits = 980;
void exp(Fast &r, const Fast &x);
void exp(Wide &r, const Wide &x);

// ln x for an operand x > 0 other than 1. N is 4 or 8.
template <int N>
inline constexpr int ln_bits = 64 * N - 40;
inline constexpr int ln_wide_bits = 840;
template <int N>
void ln(Real<N> &r, const Decimal &x);
void ln(Wide &r, const Decimal &x);

// An angle: quadrant * pi/2 + f * pi/2 with the fraction f of N limbs. f is x * 2/pi
// reduced, within 2 ulps. |x| < 10^126, |x| > 10^-25.
template <int N>
struct Angle {
    Limbs<N> f;
    unsigned quadrant;
};
template <int N>
void reduce(Angle<N> &angle, const Decimal &x);

// sine and cosine of the angle f * pi/2, each when its pointer is not null: absolute errors
// below 2^-sin_cos_bits, not relative ones, for f within 2 ulps.
template <int N>
inline constexpr int sin_cos_bits = 64 * N - 10;
void sin_cos(Fast *s, Fast *c, const Angle<fast_limbs> &angle);
void sin_cos(Wide *s, Wide *c, const Angle<wide_limbs> &angle);

// Both for r radians, 0 < r < 1, with relative errors below 2^-1000.
void sin_cos_radians(Wide &s, Wide &c, const Wide &r);

// The angle in (0, pi/2) of the point (x, y), both positive.
inline constexpr int atan_bits = 224;
inline constexpr int atan_wide_bits = 950;
void atan_quotient(Fast &r, const Fast &y, const Fast &x);
void atan_quotient(Wide &r, const Wide &y, const Wide &x);

}  // namespace calc
