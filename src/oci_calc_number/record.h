// Private header of the calc engine: the layout of the record and the helpers that
// every function uses to read and build records.
//
// A record holds what a number's bytes hold. A finite non-zero value is
// num_signed * sum of digit[i] * 100^(start_pos - i), i from 0 to 23: 24 base-100 digits, the
// first not zero, in the first three 64-bit words of data_part, one a byte. The 20 that a
// number keeps have four behind them, so that a result which is cut off toward zero
// still rounds as the exact value does. end_pos is 0. In zero num_signed is 1, all else but
// is_zero 0; an infinity has num_infinity 1 and no digits.
#pragma once

#include <algorithm>

#include "digit_words.h"
#include "oci_calc_number/oci_calc_number.h"

namespace calc {

using digit_words::Digits;

// What num_infinity says.
enum class Kind : sb1 {
    finite,
    infinity,
    logarithm,  // finite, and more: elementary/logarithm.h
};

inline bool is_negative(const QZCICalcNumber &n) { return n.num_signed < 0; }
inline bool is_infinite(const QZCICalcNumber &n) {
    return n.num_infinity == static_cast<sb1>(Kind::infinity);
}
inline bool is_logarithm(const QZCICalcNumber &n) {
    return n.num_infinity == static_cast<sb1>(Kind::logarithm);
}

// A finite value outside a record: what the algebraic functions compute with, in registers.
// Zero has no digits; otherwise the first is not zero.
struct Finite {
    Digits digits;
    int exponent;  // power of 100 of the first digit
    bool negative;
};

// The digits of a finite value that is not zero, and the power of 100 of the first.
inline Digits digits_of(const QZCICalcNumber &n) {
    // Word by word, as they were stored: a wider load would wait for the stores to finish.
    Digits d;
    for (int i = 0; i < 3; ++i) std::memcpy(&d.word[i], n.data_part + 2 * i, sizeof d.word[i]);
    return d;
}
inline int exponent_of(const QZCICalcNumber &n) { return n.start_pos; }

// |x| compared with 1, for x not zero.
inline int compare_to_one(const QZCICalcNumber &x) {
    if (is_infinite(x)) return 1;
    if (exponent_of(x) != 0) return exponent_of(x) < 0 ? -1 : 1;
    const Digits d = digits_of(x);
    return d.word[0] == digit_words::first_digit_1 && (d.word[1] | d.word[2]) == 0 ? 0 : 1;
}

// Whether |n| >= limit, for n finite and not zero, 1 <= limit < 10^4.
inline bool magnitude_at_least(const QZCICalcNumber &n, unsigned limit) {
    const int exponent = exponent_of(n);
    if (exponent < 0 || exponent > 1) return exponent > 1;
    const Digits d = digits_of(n);
    const unsigned first = digit_at(d, 0);
    return (exponent == 0 ? first : 100 * first + digit_at(d, 1)) >= limit;
}

// Whether |n| < 10^-24 = 100^-12, zero included, for n finite. For such x
// sin, tan, asin, sinh and tanh differ from x, cos and cosh from 1, by less than 10^-47 of it:
// their results are x and 1.
inline bool is_tiny(const QZCICalcNumber &n) { return n.is_zero != 0 || exponent_of(n) < -12; }

inline void set_fields(QZCICalcNumber &n, bool negative, Kind kind, int exponent, bool zero,
                       const Digits &d) {
    for (int i = 0; i < 3; ++i) std::memcpy(n.data_part + 2 * i, &d.word[i], sizeof d.word[i]);
    n.num_signed = static_cast<sb1>(1 - 2 * int{negative});
    n.num_infinity = static_cast<sb1>(kind);
    n.start_pos = static_cast<sb1>(exponent);
    n.end_pos = 0;
    n.is_zero = zero ? 1 : 0;
}

inline void set_zero(QZCICalcNumber &n) { set_fields(n, false, Kind::finite, 0, true, {}); }
inline void set_infinity(QZCICalcNumber &n, bool negative) {
    set_fields(n, negative, Kind::infinity, 0, false, {});
}

// A finite value whose first digit is not zero.
inline void set_digits(QZCICalcNumber &n, bool negative, int exponent, const Digits &d) {
    set_fields(n, negative, Kind::finite, exponent, false, d);
}

inline Finite finite_of(const QZCICalcNumber &n) {
    return {digits_of(n), exponent_of(n), is_negative(n)};
}

// Moves digits that may begin with zeros, or be all zero, to the front.
inline void normalize(Finite &f) {
    if (digit_words::has_first(f.digits)) [[likely]]
        return;
    if (is_zero(f.digits)) return;
    const unsigned zeros = leading_zeros(f.digits);
    f.exponent -= static_cast<int>(zeros);
    f.digits = moved_forward(f.digits, zeros);
}

// The same where the first digit may be zero, but not the second as well: in products and
// quotients either is as likely, and no branch depends on it.
inline void normalize_once(Finite &f) {
    const bool zero = !digit_words::has_first(f.digits);
    const unsigned bits = zero ? 8 : 0;
    const auto &[first, second, third] = f.digits.word;
    f.digits = {{first << bits | second >> 1 >> (63 - bits),
                 second << bits | third >> 1 >> (63 - bits), third << bits}};
    f.exponent -= zero;
}

// An exponent that is no sb1 is that of a product or quotient far out of the range; it becomes
// the nearest sb1.
inline void set_finite(QZCICalcNumber &n, const Finite &f) {
    if (!digit_words::has_first(f.digits)) return set_zero(n);
    set_digits(n, f.negative, std::clamp(f.exponent, -128, 127), f.digits);
}

// An integer below 10^16.
[[gnu::noinline]] inline void set_integer(QZCICalcNumber &n, bool negative, ub8 value) {
    constexpr int last = digit_words::digits_per_word - 1;
    Finite integer{digit_words::split({{value, 0, 0}}), last, negative};
    normalize(integer);
    set_finite(n, integer);
}

// Copies a record's value.
inline void copy(QZCICalcNumber &to, const QZCICalcNumber &from) {
    set_fields(to, is_negative(from), is_infinite(from) ? Kind::infinity : Kind::finite,
               exponent_of(from), from.is_zero != 0, digits_of(from));
}

// The digits of the integer part of a value from 1 up with this exponent; none of a smaller one,
// all from 100^23 up.
inline const Digits &integer_mask(int exponent) {
    const int places = std::clamp(exponent + 1, 0, int{digit_words::window});
    return digit_words::first_digits(static_cast<unsigned>(places));
}

}  // namespace calc
