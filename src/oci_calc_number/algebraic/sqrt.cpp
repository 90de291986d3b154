// Square root by the digit recurrence in base 10^8, after a start of two groups.
//
// The operand is read in words of eight digits; each gives four digits of the root, a group.
// With S the root so far and R = X - S^2 for the words X read so far, the next group is the
// largest t with t * (2 * 10^8 * S + t) <= R * 10^16 + next word. S and R are binary integers.
#include "oci_calc_number/binary/limbs.h"
#include "oci_calc_number/record.h"

using namespace calc;

namespace {

using digit_words::group_base;
using digit_words::split;
using digit_words::word_base;

constexpr int root_groups = 6;  // 24 digits
// 2 * 10^8 * S stays below 2 * 10^48 < 2^161.
constexpr int words = 3;

// floor(sqrt(x)) for 0 < x < 2^126. An approximation with half of the bits, refined by
// a division, has an error below 1 if the one before had [CPython math.isqrt]; the last
// step mends it.
u64 integer_root(u128 x) {
    const u64 head = high(x);
    const int zeros = (head != 0 ? leading_zeros(head) : 64 + leading_zeros(low(x))) & ~1;
    const u128 n = x << zeros;
    const u64 top = high(n);
    u64 root = 1 + (top >> 62);
    root = (root << 1) + (top >> 59) / root;
    root = (root << 3) + (top >> 53) / root;
    root = (root << 7) + (top >> 41) / root;
    root = (root << 15) + (top >> 17) / root;
    const u128 refined = (static_cast<u128>(root) << 31) + (n >> 33) / root;
    root = low(refined >> (zeros / 2));
    while (static_cast<u128>(root) * root > x) --root;
    while (static_cast<u128>(root + 1) * (root + 1) <= x) ++root;
    return root;
}

// 64 bits of x from `bit` on; x has a word more than the bits reach into.
inline u64 bits_from(const u64 *x, int bit) {
    x += bit / 64;
    return x[0] >> (bit % 64) | x[1] << 1 << (63 - bit % 64);
}

class RootDigits {
public:
    // The first two groups come from the first two words.
    RootDigits(u64 first, u64 second) {
        const u128 x = static_cast<u128>(first) * word_base + second;
        start = root_[0] = integer_root(x);
        rest_[0] = low(x - static_cast<u128>(start) * start);
    }

    u64 start;

    u64 next(u64 word) {
        rest_[words] = mul_1<words>(rest_, rest_, word_base);
        add_1<words + 1>(rest_, rest_, word);
        mul_1<words>(root_, root_, group_base);
        Limbs<words + 1> twice;
        add<words>(twice, root_, root_);
        twice[words] = 0;
        // From the top 36 bits of the divisor, which leave at most 63 of the rest. The
        // estimate is less than 2 above t: twice cut off adds less than 2^-8, the t that
        // it lacks at most t^2 / twice < 1/2, as twice >= 2 * 10^16.
        int top = words - 1;
        while (twice[top] == 0) --top;
        const int bit = 64 * top + 64 - leading_zeros(twice[top]) - 36;
        u64 t = bits_from(rest_, bit) / bits_from(twice, bit);
        // rest -= t * (twice + t); what was too much is given back one t at a time:
        // t * (twice + t) - (t - 1) * (twice + t - 1) = twice + 2 t - 1.
        Limbs<words> factor;
        add_1<words>(factor, twice, t);
        u64 above = rest_[words] - sub_mul_1<words>(rest_, factor, t);
        for (; above >> 63 != 0; --t) {
            add_1<words>(factor, twice, 2 * t - 1);
            above += add<words>(rest_, rest_, factor);
        }
        add_1<words>(root_, root_, t);
        return t;
    }

private:
    Limbs<words> root_ = {};
    Limbs<words + 2> rest_ = {};
};

}  // namespace

extern "C" sword QZCICalcNumSqrt(const QZCICalcNumber *operand, QZCICalcNumber *result) {
    const QZCICalcNumber &a = *operand;
    if (a.is_zero != 0) {
        set_zero(*result);
        return OCI_SUCCESS;
    }
    if (is_negative(a)) return OCI_ERROR;
    if (is_infinite(a)) {
        set_infinity(*result, false);
        return OCI_SUCCESS;
    }
    // The first digit of an even power of 100 is alone in giving the root's first digit.
    const int exponent = exponent_of(a);
    const auto d = join(moved_back(digits_of(a), exponent % 2 == 0 ? 1 : 0));
    const u64 word[root_groups] = {d.word[0], d.word[1], d.word[2]};
    RootDigits digits(word[0], word[1]);
    u64 group[root_groups];
    for (int i = 2; i < root_groups; ++i) group[i] = digits.next(word[i]);
    set_normalized(*result, false, exponent >> 1,
                   split({{digits.start, group[2] * group_base + group[3],
                           group[4] * group_base + group[5]}}));
    return OCI_SUCCESS;
}
