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

// Both finite, not zero, and nothing more than their digits: one test for the usual case.
inline bool are_plain(const QZCICalcNumber &a, const QZCICalcNumber &b) {
    return (a.num_infinity | a.is_zero | b.num_infinity | b.is_zero) == 0;
}

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
    return d.word[0] == ub8{1} << 56 && (d.word[1] | d.word[2]) == 0 ? 0 : 1;
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

// An exponent that is no sb1 is that of a product or quotient far out of the range, as the
// nearest sb1 is. Zeros in front of a result take no more than two digits off it.
inline int any_exponent(int exponent) { return std::clamp(exponent, -126, 127); }

// The same for digits that may begin with zeros, or be all zero.
inline void set_normalized(QZCICalcNumber &n, bool negative, int exponent, const Digits &d) {
    if (d.word[0] >> 56 != 0) [[likely]]
        return set_digits(n, negative, exponent, d);
    if (is_zero(d)) return set_zero(n);
    const unsigned zeros = leading_zeros(d);
    set_digits(n, negative, exponent - static_cast<int>(zeros), moved_forward(d, zeros));
}

// An integer below 10^16.
inline void set_integer(QZCICalcNumber &n, bool negative, ub8 value) {
    constexpr int last = digit_words::digits_per_word - 1;
    set_normalized(n, negative, last, digit_words::split({{value, 0, 0}}));
}

// Copies a record's value.
inline void copy(QZCICalcNumber &to, const QZCICalcNumber &from) {
    set_fields(to, is_negative(from), is_infinite(from) ? Kind::infinity : Kind::finite,
               exponent_of(from), from.is_zero != 0, digits_of(from));
}

// The digits of the integer part of a value from 1 up; none of a smaller one, all from 100^23 up.
inline Digits integer_mask(const QZCICalcNumber &n) {
    const int places = exponent_of(n) + 1;
    return digit_words::first_digits(static_cast<unsigned>(places < 0    ? 0
                                                           : places > 24 ? 24
                                                                         : places));
}

}  // namespace calc
