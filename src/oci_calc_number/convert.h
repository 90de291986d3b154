// Between a number's bytes and a finite value: reading, and the rounding of algebraic results.
#pragma once

#include "oci_calc_number/record.h"

namespace calc {

// Reads the value of `length` bytes, 1 to 21, behind a length byte; 21 are there. Returns 0, or not
// 0 for what is no run of digits with a first that is not zero: zero, the infinities, numbers not
// in normal form, and bytes that hold no number.
inline ub8 read_finite(const ub1 *value, unsigned length, Finite &out) {
    using namespace number_bytes;
    const ub1 exponent = value[0];
    const bool negative = number_bytes::is_negative(exponent);
    const ub8 sign = flip(negative);
    const Digits digits = digit_words::read_any_digits(value + 1, sign, value_bytes(value, length));
    out = {digits, real_exponent(exponent, sign), negative};
    // The top bit tells a first digit of zero from one of 1 to 99.
    return above_99(digits) | ((digits.word[0] - digit_words::first_digit_1) & ub8{1} << 63);
}

inline ub8 read_finite(const OCINumber &in, Finite &out) {
    return read_finite(in.OCINumberPart + 1, in.OCINumberPart[0], out);
}

// The value rounded half away from zero to 20 digits, under the range rule.
inline void write_finite(const Finite &f, OCINumber &out) {
    using namespace number_bytes;
    if (!has_first(f.digits)) [[unlikely]]
        return number_bytes::set_zero(out);
    Digits digits = f.digits;
    int exponent = f.exponent;
    // 50 or more in the digit behind the last carries into it by 206.
    constexpr ub8 half = ub8{256 - 50} << 24;
    constexpr ub8 kept = ~ub8{0} << 32;
    digits.word[2] = (digits.word[2] + half) & kept;
    if ((digits.word[2] >> 32 & 0xff) == 100) [[unlikely]] {
        digits.word[2] -= ub8{100} << 32;
        if (add_unit(digits, max_digits - 2)) {
            digits.word[0] = digit_words::first_digit_1;
            ++exponent;
        }
    }
    if (is_in_range(exponent)) write_digits(out, f.negative, digits);
    finish(out, f.negative, exponent, significant(digits));
}

}  // namespace calc
