// Random values in normal form, as exact decimals and as number bytes.
#pragma once

#include <bit>
#include <random>

#include "oci_utils/real_bits.h"
#include "support/exact.h"
#include "support/numbers.h"

// Of the long double that reals go through, and whether it has a size of its own.
inline constexpr int real_digits = real_bits::LongDouble::digits;
inline constexpr bool has_long_double = real_bits::LongDouble::size == 16;

// Where a value's integer of `length` bytes stands in it.
inline char *low_part(ub8 &value, uword length) {
    const bool at_end = std::endian::native == std::endian::big && length <= sizeof value;
    return reinterpret_cast<char *>(&value) + (at_end ? sizeof value - length : 0);
}

using Random = std::mt19937_64;

inline int between(Random &random, int low, int high) {
    return std::uniform_int_distribution<int>(low, high)(random);
}

// Digits with runs of 0 and 9 and of halves, where carries and ties live.
inline std::string random_digits(Random &random, size_t length) {
    std::string digits;
    while (digits.size() < length) {
        const char favourite = "0099455"[random() % 7];
        for (size_t run = 1 + random() % 12; run > 0 && digits.size() < length; --run) {
            digits += random() % 4 ? favourite : static_cast<char>('0' + random() % 10);
        }
    }
    if (digits[0] == '0') digits[0] = static_cast<char>('1' + random() % 9);
    return digits;
}

// The number next to a value; zero where there is none.
inline Decimal nearest_number(const Decimal &value) {
    const Bytes bytes = value.bytes();
    return bytes[0] == 1 || is_infinite(bytes) ? Decimal("0", 0) : Decimal::of(bytes);
}

// A number of either sign with `count` digits, at most 40, the first at 10^top.
inline Decimal random_value(Random &random, int count, int top) {
    const std::string digits = random_digits(random, static_cast<size_t>(count));
    const Decimal value =
        nearest_number(Decimal((random() % 2 ? "-" : "") + digits, top - count + 1));
    return value.sign() == 0 ? random_value(random, count, top / 2) : value;
}

// Of any length and exponent; exponents mostly moderate.
inline Decimal random_value(Random &random) {
    const int count = between(random, 1, 40);
    return random_value(
        random, count,
        random() % 4 ? count - between(random, 0, 44) - 1 : between(random, -128, 125));
}
