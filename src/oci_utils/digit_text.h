// Decimal digits in text, eight characters at a time.
#pragma once

#include "digit_words.h"

namespace digit_text {

// The first character from `p` on that is no digit, or `end`.
inline const ub1 *skip_digits(const ub1 *p, const ub1 *end) {
    using namespace digit_words;
    constexpr ub8 top_bits = in_every_byte(128);
    for (; end - p >= 8; p += 8) {
        // 0 to 9 stay below 128 with 118 added; the first byte is the top one.
        const ub8 x = load(p) ^ in_every_byte('0');
        const ub8 others = (((x & ~top_bits) + in_every_byte(118)) | x) & top_bits;
        if (others != 0) return p + std::countl_zero(others) / 8;
    }
    while (p != end && static_cast<ub1>(*p - '0') < 10) ++p;
    return p;
}

// The eight digits of 16 decimal characters.
inline ub8 digits_of(const char *characters) {
    using namespace digit_words;
    ub8 halves[2];
    for (int i = 0; i < 2; ++i) {
        constexpr ub8 pairs = 0x00FF00FF00FF00FF;
        const ub8 x = load(reinterpret_cast<const ub1 *>(characters) + 8 * i) - in_every_byte('0');
        ub8 y = (x >> 8 & pairs) * 10 + (x & pairs);
        y = (y | y >> 8) & 0x0000FFFF0000FFFF;
        halves[i] = static_cast<ub4>(y | y >> 16);
    }
    return halves[0] << 32 | halves[1];
}

}  // namespace digit_text
