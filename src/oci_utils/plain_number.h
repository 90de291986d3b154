// A finite number as its canonical decimal text shows it, before any character is written:
// what the text's readers need of it is decided by the digits.
#pragma once

#include <algorithm>

#include "digit_words.h"

namespace plain_number {

using digit_words::Digits;

struct PlainNumber {
    Digits digits;   // the first not zero, zeros behind the last
    int exponent;    // power of 100 of the first digit
    unsigned count;  // of digits up to the last that is not zero; 0 for zero
    bool negative;   // never for zero
};

// Reads the value of `length` bytes, 1 to 21, behind a length byte; 21 are there. False for what
// has no canonical text: an infinity, and bytes that hold no number, as no digit bytes or a digit
// byte out of range.
inline bool read(const ub1 *value, unsigned length, PlainNumber &p) {
    using namespace number_bytes;
    const ub1 exponent_byte = value[0];
    const bool negative = is_negative(exponent_byte);
    const unsigned bytes = value_bytes(value, length);
    Digits digits = digit_words::read_any_digits(value + 1, flip(negative), bytes);
    if (above_99(digits) != 0) return false;
    int exponent = real_exponent(exponent_byte, flip(negative));
    // Zero digits at both ends are no part of the value, whatever form is stored.
    if (!has_first(digits)) [[unlikely]] {
        if (is_zero(digits)) {
            const bool is_zero = length == 1 && exponent_byte == zero_exponent_byte;
            if (bytes <= 1 && !is_zero) return false;
            p = {{}, exponent, 0, false};
            return true;
        }
        const unsigned zeros = leading_zeros(digits);
        digits = moved_forward(digits, zeros);
        exponent -= static_cast<int>(zeros);
    }
    p = {digits, exponent, significant(digits), negative};
    return true;
}

// The same of a record; false for a length byte of 0 or above 21, too.
inline bool read(const OCINumber &n, PlainNumber &p) {
    return number_bytes::has_valid_length(n) && read(n.OCINumberPart + 1, n.OCINumberPart[0], p);
}

// The parts of the text, in characters: sign, integer digits (one "0" when there are none), the
// period with the fraction, which is 0 without one.
struct Shape {
    int integer_length;
    int fraction_length;
    bool negative;
    bool short_first;  // the first integer digit shows one place only
    bool short_last;   // the last fraction digit, too
    int length() const { return negative + integer_length + fraction_length; }
};
inline Shape shape_of(const PlainNumber &p) {
    if (p.count == 0) return {1, 0, false, false, false};
    const int integer_digits = p.exponent + 1, count = static_cast<int>(p.count);
    const bool short_first = integer_digits > 0 && digit_at(p.digits, 0) < 10;
    const bool has_fraction = count > integer_digits;
    const bool short_last = has_fraction && digit_at(p.digits, p.count - 1) % 10 == 0;
    return {integer_digits > 0 ? 2 * integer_digits - short_first : 1,
            has_fraction ? 1 + 2 * (count - integer_digits) - short_last : 0, p.negative,
            short_first, short_last};
}

// Whether the text has at most `size` characters; mostly the exponent tells.
inline bool fits(const PlainNumber &p, int size) {
    constexpr int places = 2 * int{number_bytes::max_digits};
    const int most =
        p.exponent < 0 ? places + 1 - 2 * p.exponent : std::max(places, 2 * (p.exponent + 1)) + 2;
    return most <= size || shape_of(p).length() <= size;
}

// Rounds half away from zero to `places` decimal places. The sign stays, of zero too.
inline void round_places(PlainNumber &p, unsigned places) {
    // The first digit that loses a place: all of it, or its ones.
    const int cut = p.exponent + 1 + static_cast<int>(places / 2);
    if (cut >= static_cast<int>(p.count)) return;
    if (cut < 0) {
        p.count = 0;
        return;
    }
    const auto index = static_cast<unsigned>(cut);
    const unsigned digit = digit_at(p.digits, index);
    const bool half = places % 2 != 0;  // of the digit stays
    const Digits &kept = digit_words::first_digits(index);
    for (int i = 0; i < 3; ++i) p.digits.word[i] &= kept.word[i];
    if (half) add_to_digit(p.digits, index, digit - digit % 10);
    bool carry = false;
    if (half ? digit % 10 >= 5 : digit >= 50) {
        Digits unit = {};
        if (half) add_to_digit(unit, index, 10);
        if (!half && index > 0) add_to_digit(unit, index - 1, 1);
        carry = (!half && index == 0) || combine(p.digits, unit, false, false) != 0;
    }
    if (carry) {
        p.digits = moved_back(p.digits, 1);
        add_to_digit(p.digits, 0, 1);
        ++p.exponent;
    }
    p.count = is_zero(p.digits) ? 0 : significant(p.digits);
}

}  // namespace plain_number
