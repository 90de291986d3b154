// The exponential function.
#include "oci_calc_number/binary/rounding.h"
#include "oci_calc_number/elementary/kernels.h"
#include "oci_calc_number/record.h"

namespace calc {
namespace {

constexpr u64 log2_e_32 = 6196328018;  // floor(2^32 / ln 2)

// x as a fraction of N limbs and a signed integer limb above it, in two's complement.
template <int N>
void to_signed_fixed(u64 *t, const Real<N> &x) {
    copy<N>(t, x.m);
    t[N] = 0;
    if (x.exp > 0) {
        shift_left<N + 1>(t, t, x.exp);  // exp is 9 at most
    } else {
        shift_right_any<N>(t, t, -x.exp);
    }
    if (x.negative) negate<N + 1>(t);
}

}  // namespace

// x = k ln 2 + i/2^8 + j/2^16 + r with r < 2^-16: e^x = 2^k e^(i/2^8) e^(j/2^16) e^r.
// Errors, in ulps of a mantissa in [1/2, 1): 2^10 in x - k ln 2 (ln 2 is cut off,
// |k| < 2^10), 1 in each table, 2N in each of three products, and 2^12 from the error of x:
// 2^13, below 2^-exp_bits.
template <int N>
void exp(Real<N> &r, const Real<N> &x) {
    Limbs<N + 1> t;
    if (is_zero(x))
        clear<N + 1>(t);
    else
        to_signed_fixed<N>(t, x);

    const u64 *const ln2 = top_limbs<N>(ln_2);
    const s128 top = static_cast<sb8>(t[N] << 32 | t[N - 1] >> 32);
    int k = static_cast<int>(top * static_cast<sb8>(log2_e_32) >> 64);
    if (k >= 0)
        t[N] -= sub_mul_1<N>(t, ln2, static_cast<u64>(k));
    else
        t[N] += add_mul_1<N>(t, ln2, static_cast<u64>(-k));
    while (static_cast<sb8>(t[N]) < 0) {
        t[N] += add<N>(t, t, ln2);
        --k;
    }
    while (t[N] != 0 || compare<N>(t, ln2) >= 0) {
        t[N] -= sub<N>(t, t, ln2);
        ++k;
    }

    const u64 i = t[N - 1] >> 56, j = t[N - 1] >> 48 & 0xff;
    t[N - 1] &= (u64{1} << 48) - 1;
    // e^r - 1 = r + r (r (1/2 + r/6 + ...)) up to r^10 or r^14; the first missing term is
    // below 2^-201 or 2^-280.
    Limbs<N> p, q;
    horner<N, 16, false, N == 3 ? 8 : 12>(p, t, exp_coefficient);
    mul_high<N>(p, p, t);
    mul_high<N>(p, p, t);
    add<N>(p, p, t);
    // (1 + low) (1 + p) - 1
    mul_high<N>(q, top_limbs<N>(exp_low[j]), p);
    add<N>(p, p, q);
    add<N>(p, p, top_limbs<N>(exp_low[j]));
    mul_high<N>(q, top_limbs<N>(exp_high[i]), p);
    add<N>(q, q, top_limbs<N>(exp_high[i]));
    set_fraction<N>(r, q, k + 1, false);
}

template void exp<3>(Real<3> &, const Real<3> &);
template void exp<4>(Real<4> &, const Real<4> &);

// x = k ln 2 + r, |r| < 1; Taylor's series for r / 2^20, then 20 squarings. Errors: the
// reduction 2^-1008, the series' 50 terms of 3 operations 2^-1007, which the squarings
// multiply by 2^20 and to which they add as much: below 2^-exp_bits, with an error
// of x below 2^-990.
void exp(Wide &r, const Wide &x) {
    constexpr int halvings = 20;
    const sb8 whole =
        is_zero(x) || x.exp < -1 ? 0 : static_cast<sb8>(x.m[wide_limbs - 1] >> (53 - x.exp));
    // floor(|x| * 2^11 / ln 2) / 2^11, to the sign of x
    const sb8 k_magnitude = static_cast<sb8>((static_cast<u128>(whole) * log2_e_32) >> 43);
    Wide ln2, rest, term;
    set_constant(ln2, ln_2, 0);
    set_int(term, static_cast<u64>(k_magnitude));
    term.negative = x.negative;
    mul(rest, ln2, term);
    sub(rest, x, rest);
    rest.exp -= halvings;

    set_int(r, 1);
    term = r;
    for (u64 n = 1; n < 64; ++n) {
        mul(term, term, rest);
        div_1(term, term, n);
        if (is_zero(term) || term.exp < -64 * wide_limbs) break;
        add(r, r, term);
    }
    for (int i = 0; i < halvings; ++i) mul(r, r, r);
    r.exp += static_cast<int>(x.negative ? -k_magnitude : k_magnitude);
}

}  // namespace calc

using namespace calc;

sword QZCICalcNumExp(const QZCICalcNumber *operand, QZCICalcNumber *result) {
    Operand x;
    if (operand->is_zero) {
        set_integer(*result, false, 1);
    } else if (is_infinite(*operand)) {
        if (is_negative(*operand))
            set_zero(*result);
        else
            set_infinity(*result, false);
    } else if (!read(x, *operand)) {
        return OCI_ERROR;
    } else if (magnitude_at_least(*operand, 512)) {
        if (x.negative)  // e^512 > 10^222
            set_zero(*result);
        else
            set_infinity(*result, false);
    } else {
        round_by_passes(*result, [&x]<int N>(Real<N> &r) {
            Real<N> t;
            to_real(t, x);
            exp(r, t);
            return exp_bits<N>;
        });
    }
    return OCI_SUCCESS;
}
