// Random values in normal form, as exact decimals and as number bytes.
#pragma once

#include <random>

#include "support/exact.h"
#include "support/numbers.h"

// Digits with runs of 0 and 9 and of halves, where carries and ties live.
inline std::string random_digits(std::mt19937_64 &random, size_t length) {
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

// At most 20 digit bytes, within the range; exponents mostly moderate.
inline Decimal random_value(std::mt19937_64 &random) {
    for (;;) {
        const std::string digits = random_digits(random, 1 + random() % 40);
        const long wide = static_cast<long>(random() % 254) - 167;
        const long near = -static_cast<long>(random() % 45);
        const Decimal value((random() % 2 ? "-" : "") + digits, random() % 4 ? near : wide);
        const auto bytes = value.bytes();
        if (bytes.empty() || bytes[0] == 1) continue;
        return Decimal::of(bytes);  // 40 digits in 21 pairs are rounded
    }
}

// The bytes that the library gives a result: an infinity beyond the range.
inline std::vector<int> result_bytes(const Decimal &value) {
    const auto bytes = value.bytes();
    if (!bytes.empty()) return bytes;
    return value.sign() < 0 ? std::vector<int>{1, 0} : std::vector<int>{2, 255, 101};
}
