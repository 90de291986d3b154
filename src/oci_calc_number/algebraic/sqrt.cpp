// Square root, eight digits a step: the integer root of the operand's first two words, then a
// division by twice the root so far for each further word, as in Newton's iteration, its
// remainder kept exactly [P. Zimmermann: Karatsuba Square Root, 1999].
#include "oci_calc_number/algebraic/algebraic.h"
#include "oci_calc_number/binary/limbs.h"

using namespace calc;

namespace {

using digit_words::word_base;

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

// The root's words of eight digits, for an operand of three words whose root has its first digit
// in the first place. All operands of numbers end within the third.
class RootWords {
public:
    explicit RootWords(const digit_words::Joined &x) {
        const u128 head = static_cast<u128>(x.word[0]) * word_base + x.word[1];
        const u64 first = integer_root(head);  // 10^14 to 10^16
        second(first, low(head - static_cast<u128>(first) * first), x.word[2]);
        third();
    }
    digit_words::Joined words;

private:
    // The next word t of the root s has (2 s B + t) t <= (rest B + next) B = n B, B = 10^16: n / 2s
    // without the second-order term t^2 / 2sB < 50 leaves t within one.
    void second(u64 s, u64 rest, u64 next) {
        const u64 twice = 2 * s;
        const u128 n = static_cast<u128>(rest) * word_base + next;
        const u64 q = low(n / twice);
        u64 t = q - low(static_cast<u128>(q) * q / twice) / word_base;
        // rest_ is n B - (2 s B + t) t; its parts are far below 2^127.
        const s128 above = static_cast<s128>(n) - static_cast<s128>(twice) * t;
        s128 r = above * s128{word_base} - static_cast<s128>(static_cast<u128>(t) * t);
        u128 root = static_cast<u128>(s) * word_base + t;
        for (; r < 0; --t) r += static_cast<s128>(2 * root-- - 1);
        for (; r > static_cast<s128>(2 * root); ++t) r -= static_cast<s128>(2 * root++ + 1);
        words = {{s, t, 0}};
        root_ = root;
        rest_ = static_cast<u128>(r);
    }

    // The same for the root S of two words, R = rest_ and no digits to come: the second-order term
    // is below 1. From 62 bits of 2 S the estimate is off by two at most.
    void third() {
        const u128 twice = 2 * root_;
        const int shift = 128 - 62 - leading_zeros(high(twice));
        const u128 upper = static_cast<u128>(high(rest_)) * word_base;
        const u128 lower = static_cast<u128>(low(rest_)) * word_base;
        const u128 middle = upper + high(lower);  // rest_ B = middle 2^64 + low(lower)
        u64 t = low((middle << (64 - shift) | low(lower) >> shift) / (twice >> shift));
        // rest_ B - 2 S t, below 2^127 in size; with `fits` for t, times B it is t^2 at least.
        s128 above = static_cast<s128>((middle << 64 | low(lower)) - twice * t);
        const auto fits = [](s128 v, u64 x) {
            return v >= s128{word_base} ||
                   (v >= 0 && static_cast<u128>(v) * word_base >= static_cast<u128>(x) * x);
        };
        for (; !fits(above, t); --t) above += static_cast<s128>(twice);
        for (; fits(above - static_cast<s128>(twice), t + 1); ++t) {
            above -= static_cast<s128>(twice);
        }
        words.word[2] = t;
    }

    u128 root_;
    u128 rest_;
};

}  // namespace

Finite calc::square_root(const Finite &a) {
    // The first digit of an even power of 100 is alone in giving the root's first digit.
    const auto x = join(moved_back(a.digits, a.exponent % 2 == 0 ? 1 : 0));
    return {digit_words::split(RootWords(x).words), a.exponent >> 1, false};
}

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
    set_finite(*result, square_root(finite_of(a)));
    return OCI_SUCCESS;
}
