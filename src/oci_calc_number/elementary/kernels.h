// The elementary functions on binary values: kernels of 3 and 4 limbs (the logarithm's of
// 8 too) over tables, and wide ones of 16 limbs over plain series. The constant beside each
// is its error bound: the relative error of a result is below 2^-bits. Behind them the values
// that are composed of kernels, which return the bits of theirs.
#pragma once

#include "oci_calc_number/binary/operand.h"
#include "oci_calc_number/binary/real.h"

namespace calc {

inline constexpr int ln_limbs = 8;
inline constexpr int wide_limbs = 16;
using Wide = Real<wide_limbs>;

// The bound of a kernel: `lost` of the bits of N limbs, or `wide` in the wide pass.
constexpr int kernel_bits(int n, int lost, int wide) {
    return n == wide_limbs ? wide : 64 * n - lost;
}

// e^x for |x| < 512; an error of x below 2^-operand_bits is counted in.
template <int N>
inline constexpr int exp_bits = kernel_bits(N, 16, 980);
template <int N>
void exp(Real<N> &r, const Real<N> &x);
void exp(Wide &r, const Wide &x);

// ln x for an operand x > 0 other than 1.
template <int N>
inline constexpr int ln_bits = kernel_bits(N, 40, 840);
template <int N>
void ln(Real<N> &r, const Operand &x);
void ln(Wide &r, const Operand &x);

// An angle: quadrant * pi/2 + f * pi/2 with the fraction f of N limbs. f is x * 2/pi
// reduced, within 2 ulps. |x| < 10^126, |x| > 10^-25.
template <int N>
struct Angle {
    Limbs<N> f;
    unsigned quadrant;
};
template <int N>
void reduce(Angle<N> &angle, const Operand &x);

// sine and cosine of the angle f * pi/2, each when its pointer is not null: absolute errors
// below 2^-sin_cos_bits, not relative ones, for f within 2 ulps.
template <int N>
inline constexpr int sin_cos_bits = kernel_bits(N, 10, 1000);
template <int N>
void sin_cos(Real<N> *s, Real<N> *c, const Angle<N> &angle);
void sin_cos(Wide *s, Wide *c, const Angle<wide_limbs> &angle);

// Both for r radians, 0 < r < 1, with relative errors below 2^-1000.
void sin_cos_radians(Wide &s, Wide &c, const Wide &r);

// The angle in (0, pi/2) of the point (x, y), both positive.
template <int N>
inline constexpr int atan_bits = kernel_bits(N, 32, 950);
template <int N>
void atan_quotient(Real<N> &r, const Real<N> &y, const Real<N> &x);
void atan_quotient(Wide &r, const Wide &y, const Wide &x);

// What the passes evaluate. A value of zero says that nothing remains of it at this width.

enum class Trig { sine, cosine, tangent };
// |x| >= 10^-24
template <int N>
int trig_value(Real<N> &r, Trig function, const Operand &x);

enum class Arc { sine, cosine };
// |x| < 1
template <int N>
int arc_value(Real<N> &r, Arc function, const Operand &x);
// The angle of the point (x, y), not on an axis.
template <int N>
int angle_value(Real<N> &r, const Operand &y, const Operand &x);

enum class Hyperbolic { sine, cosine, tangent };
// 10^-24 <= |x| < 512, for the tangent |x| < 64
template <int N>
int hyperbolic_value(Real<N> &r, Hyperbolic function, const Operand &x);

// x^y, x > 0 other than 1, y not zero: infinite or zero when |y ln x| >= 512, told by a bound of 0.
template <int N>
int power_value(Real<N> &r, const Operand &x, const Operand &y);

// Whether x^y is exactly v; x and v positive, of at most 40 and 41 digits.
bool is_power(const Operand &x, const Operand &y, const Operand &v);

// ln x / ln y
template <int N>
int logarithm_quotient(Real<N> &r, const Operand &x, const Operand &y);

}  // namespace calc
