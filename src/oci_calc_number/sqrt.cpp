// Square root by the digit recurrence in base 10^8, after a start of two limbs.
//
// The operand is read as words of two limbs at even positions; each word gives one limb
// of the root. With S the root so far and R = X - S^2 for the words X read so far, the
// next limb is the largest t with t * (2 * 10^8 * S + t) <= R * 10^16 + next word.
// S and R are binary integers, the digits t decimal.
#include "oci_calc_number/engine.h"
#include "oci_calc_number/limbs.h"

namespace {

using calc::limb_base;
using calc::Limbs;
using calc::low;
using calc::u128;
using calc::u64;
using calc::word_base;

constexpr int root_limbs = 6;  // one digit more than 20 at least, as the top is not zero
// 2 * 10^8 * S stays below 2 * 10^48 < 2^161.
constexpr int words = 3;

// floor(sqrt(x)) for 0 < x < 2^126. An approximation with half of the bits, refined by
// a division, has an error below 1 if the one before had [CPython math.isqrt]; the last
// step mends it.
u64 integer_root(u128 x) {
    const u64 head = calc::high(x);
    const int zeros =
        (head != 0 ? calc::leading_zeros(head) : 64 + calc::leading_zeros(low(x))) & ~1;
    const u128 n = x << zeros;
    const u64 top = calc::high(n);
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
    // The first two limbs come from the first two words.
    RootDigits(u64 first, u64 second) {
        const u128 x = static_cast<u128>(first) * word_base + second;
        root_[0] = integer_root(x);
        rest_[0] = low(x - static_cast<u128>(root_[0]) * root_[0]);
    }

    u64 root() const { return root_[0]; }

    ub4 next(u64 word) {
        rest_[words] = calc::mul_1<words>(rest_, rest_, word_base);
        calc::add_1<words + 1>(rest_, rest_, word);
        calc::mul_1<words>(root_, root_, limb_base);
        Limbs<words + 1> twice;
        calc::add<words>(twice, root_, root_);
        twice[words] = 0;
        // From the top 36 bits of the divisor, which leave at most 63 of the rest. The
        // estimate is less than 2 above t: twice cut off adds less than 2^-8, the t that
        // it lacks at most t^2 / twice < 1/2, as twice >= 2 * 10^16.
        int top = words - 1;
        while (twice[top] == 0) --top;
        const int bit = 64 * top + 64 - calc::leading_zeros(twice[top]) - 36;
        u64 t = bits_from(rest_, bit) / bits_from(twice, bit);
        // rest -= t * (twice + t); what was too much is given back one t at a time:
        // t * (twice + t) - (t - 1) * (twice + t - 1) = twice + 2 t - 1.
        Limbs<words> factor;
        calc::add_1<words>(factor, twice, t);
        u64 above = rest_[words] - calc::sub_mul_1<words>(rest_, factor, t);
        for (; above >> 63 != 0; --t) {
            calc::add_1<words>(factor, twice, 2 * t - 1);
            above += calc::add<words>(rest_, rest_, factor);
        }
        calc::add_1<words>(root_, root_, t);
        return static_cast<ub4>(t);
    }

private:
    Limbs<words> root_ = {};
    Limbs<words + 2> rest_ = {};
};

}  // namespace

extern "C" sword QZCICalcNumSqrt(const QZCICalcNumber *operand, QZCICalcNumber *result) {
    const QZCICalcNumber &a = *operand;
    if (a.is_zero != 0) {
        calc::set_zero(*result);
        return OCI_SUCCESS;
    }
    if (calc::is_negative(a)) return OCI_ERROR;
    if (calc::is_infinite(a)) {
        calc::set_infinity(*result, false);
        return OCI_SUCCESS;
    }
    u64 word[root_limbs] = {};
    const int root_pos = a.start_pos >> 1;
    int at = calc::limb_count(a) - 1;
    for (int i = 0; i < root_limbs && at >= 0; ++i) {
        if (i > 0 || (a.start_pos & 1) != 0) word[i] = u64{a.data_part[at--]} * limb_base;
        if (at >= 0) word[i] += a.data_part[at--];
    }
    RootDigits digits(word[0], word[1]);
    ub4 *const limbs = result->data_part;
    limbs[root_limbs - 1] = static_cast<ub4>(digits.root() / limb_base);
    limbs[root_limbs - 2] = static_cast<ub4>(digits.root() % limb_base);
    for (int i = 2; i < root_limbs; ++i) limbs[root_limbs - 1 - i] = digits.next(word[i]);
    calc::set_trimmed(*result, false, root_pos - root_limbs + 1, root_limbs);
    return OCI_SUCCESS;
}
