#include "oci_calc_number/binary/rounding.h"

#include <algorithm>

#include "oci_calc_number/binary/operand.h"

namespace calc {
namespace {

using digit_words::group_base;
using digit_words::word_base;

constexpr u64 power_of_100[] = {1, 100, 10000, 1000000, 100000000};

// How many base-100 digits a group has, its zeros in front aside.
inline int digits_in(ub4 group) {
    return 1 + (group >= 100) + (group >= 10000) + (group >= 1000000);
}

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

// log10(2) is log10_2 / 2^18, closely enough for the exponents of values within the range.
constexpr int log10_2 = 78913;

// v.exp lies within the range checked by round_to_record.
template <int N>
void scale(Scaled<N> &s, const Real<N> &v) {
    // The position of 2^(exp - 1): v's or 1 below it.
    s.pos = (v.exp - 1) * log10_2 >> (18 + 3);
    for (bool raised = false;;) {
        Limbs<N> product;
        mul_high<N>(product, v.m, power_of_group<N>(-s.pos));
        const int exp = v.exp + power_exp(-s.pos);  // 0 to 29
        s.top = exp == 0 ? 0 : static_cast<ub4>(product[N - 1] >> (64 - exp));
        // v/10^(8 pos) may be just below 1 by the truncations alone: once raised, the
        // position is not lowered again.
        if (s.top < group_base && (s.top > 0 || raised)) {
            shift_left<N>(s.fraction, product, exp);
            return;
        }
        raised = s.top > 0;
        s.pos += raised ? 1 : -1;
    }
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

// The value (top . pair1 pair2 last) * 10^(8 pos): a group that is not 0, two words and a group.
void set_groups(QZCICalcNumber &n, bool negative, int pos, ub4 top, u64 pair1, u64 pair2,
                u64 last) {
    using namespace digit_words;
    const u64 groups1 = grouped(pair1), groups2 = grouped(pair2);
    const TwoWords front =
        split_groups({u64{top} << 32 | groups1 >> 32, groups1 << 32 | groups2 >> 32});
    const u64 back = split_groups({0, groups2 << 32 | last}).low;
    // Moved forward over the zeros in front, three at most.
    const int first = digits_in(top), bits = 8 * (4 - first);
    set_digits(n, negative, 4 * pos + first - 1,
               {{front.high << bits | front.low >> 1 >> (63 - bits),
                 front.low << bits | back >> 1 >> (63 - bits), back << bits}});
}

}  // namespace

template <int N>
bool round_to_record(QZCICalcNumber &result, const Real<N> &v, int bits, Undecided undecided) {
    if (out_of_range(result, v.exp, v.negative)) return true;
    Scaled<N> s;
    scale(s, v);
    // The top group's base-100 digits, and the units of the last of 20 digits.
    const int first = digits_in(s.top);
    const u64 last_base = power_of_100[4 - first];
    u64 *const f = s.fraction;
    u64 pair1 = mul_1<N>(f, f, word_base);
    u64 pair2 = mul_1<N>(f, f, word_base);
    u64 last = mul_1<N>(f, f, last_base);

    // f is what follows the last digit, v below 10^40 < 2^133 units of that digit. So
    // the error of f is below 2^-certain.
    constexpr int unit_bits = 133;
    const int certain = std::min(bits, scale_bits<N>) - 1 - unit_bits;
    bool up = f[N - 1] >> 63 != 0;
    // The distance to one half, at most an ulp too small, against the error: f, or its
    // complement, without the top bit.
    const u64 mask = up ? 0 : ~u64{0};
    u64 distance = f[N - 1] ^ mask ^ u64 { 1 } << 63;
    int zeros = 0;
    for (int i = N - 2; distance == 0 && i >= 0; --i, zeros += 64) distance = f[i] ^ mask;
    zeros += leading_zeros(distance);
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
                if (++s.top == group_base) {
                    s.top = 1;
                    ++s.pos;
                }
            }
        }
    }
    set_groups(result, v.negative, s.pos, s.top, pair1, pair2, last * power_of_100[first]);
    return true;
}

template bool round_to_record<3>(QZCICalcNumber &, const Real<3> &, int, Undecided);
template bool round_to_record<4>(QZCICalcNumber &, const Real<4> &, int, Undecided);
template bool round_to_record<16>(QZCICalcNumber &, const Real<16> &, int, Undecided);

}  // namespace calc
