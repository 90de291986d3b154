#include "oci_calc_number/rounding.h"

#include "oci_calc_number/decimal.h"

namespace calc {
namespace {

constexpr u64 power_of_100[] = {1, 100, 10000, 1000000, 100000000};

// v = (top + fraction / 2^(64N)) * 10^(8 pos) with 1 <= top < 10^8, within a relative
// error of 2^-scale_bits<N>: the power of ten is cut off by 1 ulp, the product by 2N ulps at
// a mantissa of 1/4 or more. top is 0 for a value within that error below 10^(8 pos).
template <int N>
inline constexpr int scale_bits = 64 * N - 8;

template <int N>
struct Scaled {
    Limbs<N> fraction;
    ub4 top;
    int pos;
};

// v.exp lies within the range checked by round_to_record.
template <int N>
void scale(Scaled<N> &s, const Real<N> &v) {
    // 78913 / 2^18 is log10(2): the position of 2^(exp - 1), which is v's or 1 below it.
    s.pos = (v.exp - 1) * 78913 >> 21;
    for (bool raised = false;;) {
        Limbs<N> product;
        mul_high<N>(product, v.m, power_mantissa[-s.pos - min_power] + 16 - N);
        const int exp = v.exp + power_exp(-s.pos);  // 0 to 29
        s.top = exp == 0 ? 0 : static_cast<ub4>(product[N - 1] >> (64 - exp));
        // v/10^(8 pos) may be just below 1 by the truncations alone: once raised, the
        // position is not lowered again.
        if (s.top < limb_base && (s.top > 0 || raised)) {
            shift_left<N>(s.fraction, product, exp);
            return;
        }
        raised = s.top > 0;
        s.pos += raised ? 1 : -1;
    }
}

void put_pair(ub4 *limb, u64 pair) {
    limb[1] = static_cast<ub4>(pair / limb_base);
    limb[0] = static_cast<ub4>(pair % limb_base);
}

// Exponents beyond which every result is an infinity or zero: 2^440 > 10^132,
// 2^-440 < 10^-132.
constexpr int exp_limit = 440;

bool out_of_range(QZCICalcNumber &result, int exp, bool negative) {
    if (exp > exp_limit)
        set_infinity(result, negative);
    else if (exp < -exp_limit)
        set_zero(result);
    else
        return false;
    return true;
}

}  // namespace

template <int N>
bool round_to_record(QZCICalcNumber &result, const Real<N> &v, int bits, Undecided undecided) {
    if (out_of_range(result, v.exp, v.negative)) return true;
    Scaled<N> s;
    scale(s, v);
    // The top limb's base-100 digits, and the units of the last of 20 digits.
    const int first = top_digits(s.top);
    const u64 last_base = power_of_100[4 - first];
    u64 *const f = s.fraction;
    u64 pair1 = mul_1<N>(f, f, word_base);
    u64 pair2 = mul_1<N>(f, f, word_base);
    u64 last = mul_1<N>(f, f, last_base);

    // f is what follows the last digit, v below 10^40 < 2^133 units of that digit. So
    // the error of f is below 2^-certain.
    const int certain = (bits < scale_bits<N> ? bits : scale_bits<N>)-1 - 133;
    bool up = f[N - 1] >> 63 != 0;
    // The distance to one half, at most an ulp too small, against the error.
    Limbs<N> distance;
    const u64 mask = up ? 0 : ~u64{0};
    for (int i = 0; i < N; ++i) distance[i] = f[i] ^ mask;
    distance[N - 1] ^= u64{1} << 63;
    int zeros = 0, i = N - 1;
    while (i > 0 && distance[i] == 0) --i, zeros += 64;
    zeros += leading_zeros(distance[i]);
    if (zeros >= certain - 1) {
        if (undecided == Undecided::retry) return false;
        if (undecided != Undecided::nearest) up = undecided == Undecided::away_from_zero;
    }

    if (up && ++last == last_base) {
        last = 0;
        if (++pair2 == word_base) {
            pair2 = 0;
            if (++pair1 == word_base) {
                pair1 = 0;
                if (++s.top == limb_base) {
                    s.top = 1;
                    ++s.pos;
                }
            }
        }
    }
    ub4 *const limb = result.data_part;
    limb[0] = static_cast<ub4>(last * power_of_100[first]);
    put_pair(limb + 1, pair2);
    put_pair(limb + 3, pair1);
    limb[5] = s.top;
    set_trimmed(result, v.negative, s.pos - 5, 6);
    clamp_to_range(result);
    return true;
}

template bool round_to_record<3>(QZCICalcNumber &, const Real<3> &, int, Undecided);
template bool round_to_record<4>(QZCICalcNumber &, const Real<4> &, int, Undecided);
template bool round_to_record<8>(QZCICalcNumber &, const Real<8> &, int, Undecided);
template bool round_to_record<16>(QZCICalcNumber &, const Real<16> &, int, Undecided);

}  // namespace calc
