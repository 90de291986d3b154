// The algebraic functions of finite values that are not zero: exact, or cut off toward zero
// behind 22 digits at least, so that rounding to 20 gives what the exact value would. The number
// module calls them on the bytes' digits directly; on records they take zero and the infinities,
// too (oci_calc_number.h).
#pragma once

#include <algorithm>
#include <cstdlib>

#include "oci_calc_number/record.h"

namespace calc {

// Whether |a| < |b|.
inline bool is_less(const Finite &a, const Finite &b) {
    // One comparison of exponents and first digits, without a branch: it is as good as random.
    __extension__ typedef unsigned __int128 Front;
    const auto front = [](const Finite &f) {
        return static_cast<Front>(static_cast<ub8>(f.exponent + 128)) << 64 | f.digits.word[0];
    };
    const auto front_a = front(a), front_b = front(b);
    if (front_a == front_b) [[unlikely]] {
        return a.digits.word[1] != b.digits.word[1] ? a.digits.word[1] < b.digits.word[1]
                                                    : a.digits.word[2] < b.digits.word[2];
    }
    return front_a < front_b;
}

// a + b, or a - b with `subtract`.
inline Finite sum(Finite a, Finite b, bool subtract) {
    const ub8 exchanged = ub8{0} - is_less(a, b);
    const bool opposite = a.negative != (b.negative != subtract);
    exchange(exchanged, a.digits, b.digits);
    const auto distance = static_cast<unsigned>(std::abs(a.exponent - b.exponent));
    a.exponent = std::max(a.exponent, b.exponent);
    a.negative ^= opposite & exchanged;
    // Digits that leave the window take the exact difference below what the others give. They
    // are four places behind the first at least, so the difference keeps 23 digits.
    const bool cut =
        opposite && distance > 4 &&
        has_digits_from(b.digits, int{digit_words::window} - static_cast<int>(distance));
    if (combine(a.digits, moved_back(b.digits, distance), opposite, cut) != 0) {
        a.digits = moved_back(a.digits, 1);
        a.digits.word[0] |= digit_words::first_digit_1;
        ++a.exponent;
    }
    normalize(a);
    return a;
}

// The integer part, one further from zero when `outward` and something was cut off.
inline Finite integer_part(const Finite &n, bool outward) {
    const Digits &mask = integer_mask(n.exponent);
    const auto in_front = [&](int i) { return n.digits.word[i] & mask.word[i]; };
    const auto behind = [&](int i) { return n.digits.word[i] & ~mask.word[i]; };
    Finite kept{{{in_front(0), in_front(1), in_front(2)}}, n.exponent, n.negative};
    const ub8 fraction = behind(0) | behind(1) | behind(2);
    // The unit is the last integer digit's: there is one when a fraction follows it.
    const bool step = outward & (fraction != 0);
    const bool below_1 = n.exponent < 0;
    kept.exponent = below_1 ? 0 : n.exponent;
    const auto unit = static_cast<unsigned>(kept.exponent);
    if (unit < digit_words::window) {
        if (step && digit_at(kept.digits, unit) == 99) [[unlikely]] {
            if (add_unit(kept.digits, unit)) {
                kept.digits.word[0] = digit_words::first_digit_1;
                ++kept.exponent;
            }
        } else {
            digit_words::add_to_digit(kept.digits, unit, step ? 1 : 0);
        }
    }
    return kept;
}

// Of operands of at most 20 digits.
Finite product(const Finite &a, const Finite &b);
Finite quotient(const Finite &a, const Finite &b);
// The remainder of the truncated quotient.
Finite remainder(const Finite &a, const Finite &b);
// Of a positive value.
Finite square_root(const Finite &a);

}  // namespace calc
