// The byte format of OCINumber: the one place where its rules are written.
//
// byte 0  length byte, 1 to 21: how many bytes of the value follow
// byte 1  exponent byte: 193 + E, or the complement 62 - E when negative, where
//         E, the real exponent, is the power of 100 of the first digit byte
// byte 2  digit bytes, base 100: d + 1, or 101 - d when negative; then the
//         ending byte 102 of a negative value with fewer than 20 digit bytes
#pragma once

#include "oci.h"

namespace number_bytes {

static_assert(sizeof(OCINumber) == 22 && alignof(OCINumber) == 1);

inline constexpr unsigned max_digits = 20;
inline constexpr ub1 max_length = 21;
inline constexpr ub1 zero_exponent_byte = 128;
inline constexpr ub1 ending_byte = 102;
// Real exponents of finite values: 100^-64 to just below 100^63.
inline constexpr int min_exponent = -64;
inline constexpr int max_exponent = 62;

// A length byte of 0 or above 21 marks a record that holds no number.
inline bool has_valid_length(const OCINumber &n) {
    return static_cast<ub1>(n.OCINumberPart[0] - 1) < max_length;
}

inline bool is_zero(const OCINumber &n) {
    return n.OCINumberPart[0] == 1 && n.OCINumberPart[1] == zero_exponent_byte;
}

inline bool is_negative_infinity(const OCINumber &n) {
    return n.OCINumberPart[0] == 1 && n.OCINumberPart[1] == 0;
}

inline bool is_positive_infinity(const OCINumber &n) {
    return n.OCINumberPart[0] == 2 && n.OCINumberPart[1] == 255 && n.OCINumberPart[2] == 101;
}

// The top bit of the exponent byte is the sign; zero's byte is the lowest of those with it.
constexpr bool is_negative(ub1 exponent_byte) { return exponent_byte < zero_exponent_byte; }
inline bool is_negative(const OCINumber &n) { return is_negative(n.OCINumberPart[1]); }

// What only the exponent byte tells: zero is taken for zero whatever its length byte says, and
// only positive numbers lie above.
inline bool has_zero_exponent(const OCINumber &n) {
    return n.OCINumberPart[1] == zero_exponent_byte;
}
inline bool has_positive_exponent(const OCINumber &n) {
    return n.OCINumberPart[1] > zero_exponent_byte;
}

// A sign as a mask that turns bytes. Signs are as good as random, so they choose by masks rather
// than branches.
constexpr ub8 flip(bool negative) { return ub8{0} - negative; }

// What is written under the mask, and the former bytes elsewhere. Hidden from the compiler, the
// masks stay two: of one it makes exclusive ors, and memory checkers then take written bytes for
// those of a record that nobody has set.
inline ub8 blend(ub8 written, ub8 former, ub8 mask) {
    ub8 others = ~mask;
    asm("" : "+r"(others));
    return (written & mask) | (former & others);
}

// The complement of the exponent byte turns the sign: 62 - E is that of 193 + E.
constexpr int real_exponent(ub1 exponent_byte, ub8 flip) {
    return static_cast<int>((exponent_byte ^ flip) & 0xff) - 193;
}
constexpr int real_exponent(ub1 exponent_byte) {
    return real_exponent(exponent_byte, flip(is_negative(exponent_byte)));
}
constexpr ub1 exponent_byte(bool negative, int exponent) {
    return static_cast<ub1>(static_cast<ub8>(193 + exponent) ^ flip(negative));
}

constexpr ub1 turn_digit_byte(ub1 b) { return static_cast<ub1>(102 - b); }

// A byte outside its sign's range decodes to a value above 99.
constexpr ub1 decode_digit(bool negative, ub1 b) {
    return static_cast<ub1>(negative ? 101 - b : b - 1);
}
// Exponent and digit bytes of a record with a valid length. No digit byte is 102, so a final
// byte 102 is always the ending byte; with a length byte of 1 the exponent byte may look like it.
inline unsigned value_bytes(const ub1 *value, unsigned length) {
    return length - (value[length - 1] == ending_byte);
}
inline unsigned value_bytes(const OCINumber &n) {
    return value_bytes(n.OCINumberPart + 1, n.OCINumberPart[0]);
}
inline unsigned digit_count(const OCINumber &n) {
    const unsigned bytes = value_bytes(n);
    return bytes - (bytes > 0);
}

// Sets length byte, exponent byte and the ending byte around `count` digit
// bytes that are in place already.
inline void set_frame(OCINumber &n, bool negative, int exponent, unsigned count) {
    unsigned length = count + 1;
    if (count < max_digits) {
        ub1 &behind = n.OCINumberPart[count + 2];
        behind = static_cast<ub1>(blend(ending_byte, behind, flip(negative)));
        length += negative;
    }
    n.OCINumberPart[0] = static_cast<ub1>(length);
    n.OCINumberPart[1] = exponent_byte(negative, exponent);
}

// The digits of a record, most significant first, seen through the sign: the same
// for both signs, so that one algorithm serves both. Changes go to the digit
// bytes at once; `finish` writes the bytes around them.
struct DigitView {
    OCINumber &number;
    bool negative;
    int exponent;    // real exponent of the first digit
    unsigned count;  // at most max_digits

    // For both signs digit = (byte ^ mask) - bias, as 255 - b - 154 = 101 - b.
    unsigned get(unsigned i) const {
        return static_cast<ub1>((number.OCINumberPart[2 + i] ^ mask()) - bias());
    }
    void set(unsigned i, unsigned digit) {
        number.OCINumberPart[2 + i] = static_cast<ub1>((digit + bias()) ^ mask());
    }
    void append(unsigned digit) { set(count++, digit); }

private:
    unsigned mask() const { return negative ? 0xff : 0; }
    unsigned bias() const { return negative ? 154 : 1; }
};

// Of a record with a valid length.
inline DigitView digits_of(OCINumber &n) {
    return {n, is_negative(n), real_exponent(n.OCINumberPart[1]), digit_count(n)};
}

// Copies a record and views the copy's digits. The bytes are looked at before they are copied:
// loads from bytes just stored wait.
inline DigitView copy_digits(const OCINumber &from, OCINumber &to) {
    const DigitView digits{to, is_negative(from), real_exponent(from.OCINumberPart[1]),
                           digit_count(from)};
    to = from;
    return digits;
}

// Of no digits yet.
inline DigitView new_digits(OCINumber &n, bool negative, int exponent) {
    return {n, negative, exponent, 0};
}

// Drops zero digits at the end; zero is left with no digit.
inline void trim(DigitView &d) {
    while (d.count > 0 && d.get(d.count - 1) == 0) --d.count;
}

// Adds one to the last digit and drops the zeros that its carry leaves at the
// end. A carry out of the first digit leaves one digit 1 a place higher; with no
// digits at all that is the unit just above the first place.
inline void round_up(DigitView &d) {
    while (d.count > 0 && d.get(d.count - 1) == 99) --d.count;
    if (d.count == 0) {
        d.append(1);
        ++d.exponent;
    } else {
        d.set(d.count - 1, d.get(d.count - 1) + 1);
    }
}

inline void set_zero(OCINumber &n) {
    n.OCINumberPart[0] = 1;
    n.OCINumberPart[1] = zero_exponent_byte;
}

inline void OCINumberSetPInfi(OCINumber *number) {
    number->OCINumberPart[0] = 2;
    number->OCINumberPart[1] = 255;
    number->OCINumberPart[2] = 101;
}
inline void OCINumberSetNInfi(OCINumber *number) {
    number->OCINumberPart[0] = 1;
    number->OCINumberPart[1] = 0;
}
inline void set_infinity(OCINumber &n, bool negative) {
    negative ? OCINumberSetNInfi(&n) : OCINumberSetPInfi(&n);
}

inline bool is_in_range(int exponent) {
    return exponent >= min_exponent && exponent <= max_exponent;
}

// Sets length byte, exponent byte and ending byte of `count` digit bytes that are in place. By
// the range rule a value from 100^63 up becomes the infinity of its sign, one below 100^-64,
// or of no digits, zero. Returns what it became.
enum class Finished { number, infinity, zero };
inline Finished finish(OCINumber &n, bool negative, int exponent, unsigned count) {
    if (exponent > max_exponent) {
        set_infinity(n, negative);
        return Finished::infinity;
    }
    if (exponent < min_exponent || count == 0) {
        set_zero(n);
        return Finished::zero;
    }
    set_frame(n, negative, exponent, count);
    return Finished::number;
}
inline Finished finish(const DigitView &d) {
    return finish(d.number, d.negative, d.exponent, d.count);
}

}  // namespace number_bytes
