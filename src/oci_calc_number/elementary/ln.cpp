// The natural logarithm, by multiplicative normalisation: factors from tables turn the
// operand into 1 + r, their logarithms are added up [J.-M. Muller: Elementary Functions].
#include "oci_calc_number/binary/rounding.h"
#include "oci_calc_number/elementary/kernels.h"
#include "oci_calc_number/elementary/logarithm.h"

namespace calc {
namespace {

// Below 2^-near_one_bits from 1, ln x is computed from x - 1.
constexpr int near_one_bits = 28;
constexpr int level_bits = 35;  // what the five table levels leave

// The highest power in the sum 1/2 - r/3 + r^2/4 - ... of ln(1+r) = r - r^2 * sum for
// the first missing term r^(k+3)/(k+3) to stay below 2^-64N, or 2^-64N r.
constexpr int last_power(int n, int bits, bool relative) {
    int k = 0;
    while (bits * (k + (relative ? 2 : 3)) < 64 * n + 2) ++k;
    return k;
}

template <int N>
bool is_near_one(const Real<N> &x) {
    const u64 top = x.m[N - 1];
    return x.exp == 1 ? top - (u64{1} << 63) < u64{1} << (63 - near_one_bits)
                      : x.exp == 0 && ~top < u64{1} << (64 - near_one_bits);
}

// ln(1 + d), d of full relative precision: d (1 - d (1/2 - d/3 + ...)). A negative d
// is turned by ln(1 - e) = -ln(1 + e/(1 - e)). Relative error: 2^-real_bits four times.
template <int N>
void ln_near_one(Real<N> &r, const Real<N> &distance) {
    Real<N> d = distance;
    if (d.negative) {
        Real<N> one;
        set_int(one, 1);
        add(one, one, distance);
        div(d, distance, one);
    }
    Limbs<N> t, sum;
    to_fraction<N>(t, d);
    horner<N, near_one_bits - 1, true, last_power(N, near_one_bits - 1, true)>(sum, t,
                                                                               ln_coefficient);
    mul_high<N>(sum, sum, t);
    Real<N> s;
    set_fraction<N>(s, sum, 0, false);
    mul(s, s, d);
    sub(r, d, s);
    r.negative = distance.negative;
}

// Multiplies 1 + r, 0 <= r < 2^(7 - Shift), by the 1 - g of the table that leaves
// 0 <= r < 2^-Shift (the last level: 2^-35 (1 + 2^-28)), and adds -ln(1 - g) to the sum of N + 1
// limbs. Error: 1 ulp in each of r and the sum.
template <int N, int Shift, size_t Count, size_t Width>
void ln_level(u64 *r, u64 *sum, const u64 (&level)[Count][Width]) {
    const auto &entry = level[r[N - 1] >> (64 - Shift)];
    Limbs<N> t;
    mul_fraction_1<N>(t, r, entry[0]);
    sub<N>(r, r, t);
    r[N - 1] -= entry[0];
    sum[N] += add<N>(sum, sum, top_limbs<N>(entry));
}

}  // namespace

// x = 2^k a, 1 <= a < 2: five levels of tables turn a into 1 + r, r < 2^-35, and a series
// gives ln(1 + r). Errors in ulps of 2^-64N: 8 from the operand, 2 in each level, 2N + 1 in
// the series, |k| < 2^9 in k ln 2. Below 2^6 ulps for k = 0 and -1, where the sum is at
// least 2^-28, else below 2^6 + |k| in a sum above |k| / 4: below 2^-ln_bits.
template <int N>
void ln(Real<N> &r, const Operand &x) {
    Real<N> a;
    to_real(a, x);
    if (is_near_one(a)) {
        Operand distance;
        if (distance_to_one(distance, x)) {
            to_real(a, distance);
            return ln_near_one(r, a);
        }
    }
    // a * c = (a.m / 2^64N * 2) * (entry / 2^63); the product holds (1 + r) / 4.
    const auto &entry = ln_level_1[a.m[N - 1] >> 55 & 0xff];
    Limbs<N + 1> t, sum;
    t[N] = mul_1<N>(t, a.m, entry[0]);
    shift_left<N + 1>(t, t, 2);
    u64 *const rest = t + 1;
    copy<N>(sum, top_limbs<N>(entry));
    sum[N] = 0;
    ln_level<N, 14>(rest, sum, ln_level_2);
    ln_level<N, 21>(rest, sum, ln_level_3);
    ln_level<N, 28>(rest, sum, ln_level_4);
    ln_level<N, 35>(rest, sum, ln_level_5);

    Limbs<N> p;
    horner<N, level_bits - 1, true, last_power(N, level_bits, false)>(p, rest, ln_coefficient);
    mul_high<N>(p, p, rest);
    mul_high<N>(p, p, rest);
    sub<N>(rest, rest, p);
    sum[N] += add<N>(sum, sum, rest);

    const int k = a.exp - 1;
    const u64 *const ln2 = top_limbs<N>(ln_2);
    if (k >= 0)
        sum[N] += add_mul_1<N>(sum, ln2, static_cast<u64>(k));
    else
        sum[N] -= sub_mul_1<N>(sum, ln2, static_cast<u64>(-k));
    const bool negative = sum[N] >> 63 != 0;
    if (negative) negate<N + 1>(sum);
    const int shift = normalize<N + 1>(sum);
    copy<N>(r.m, sum + 1);
    r.exp = 64 - shift;
    r.negative = negative;
}

template void ln<3>(Real<3> &, const Operand &);
template void ln<4>(Real<4> &, const Operand &);
template void ln<ln_limbs>(Real<ln_limbs> &, const Operand &);

// One step of Halley's iteration y + 2 (x - e^y) / (x + e^y) from the ln of 8 limbs:
// its error e becomes e^3 / 12 < 2^-1400. e^y has an absolute error below 2^-980 x, of
// a logarithm that is at least 10^-40: below 2^-ln_bits.
void ln(Wide &r, const Operand &x) {
    Real<ln_limbs> start;
    ln(start, x);
    Wide y, e, d, a;
    set_width(y, start);
    to_real(a, x);
    exp(e, y);
    sub(d, a, e);
    add(e, a, e);
    div(d, d, e);
    ++d.exp;
    add(r, y, d);
}

}  // namespace calc

using namespace calc;

sword QZCICalcNumLn(const QZCICalcNumber *operand, QZCICalcNumber *result) {
    Operand x;
    if (operand->is_zero || is_negative(*operand)) return OCI_ERROR;
    if (is_infinite(*operand)) {
        set_infinity(*result, false);
        return OCI_SUCCESS;
    }
    if (!read(x, *operand)) return OCI_ERROR;
    if (is_one(x)) {
        set_zero(*result);
        return OCI_SUCCESS;
    }
    round_by_passes(*result, [&]<int N>(Real<N> &r) {
        ln(r, x);
        if constexpr (N == 3) {
            keep_logarithm(*result, x, r);
        } else {
            Real<3> narrow;
            set_width(narrow, r);
            keep_logarithm(*result, x, narrow);
        }
        return ln_bits<N>;
    });
    mark_logarithm(*result);
    return OCI_SUCCESS;
}
