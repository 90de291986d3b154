// Natural numbers of a bounded size on the stack: the exact arithmetic behind
// the conversions between binary and decimal.
#pragma once

#include <cstring>

#include "oratypes.h"

namespace natural {

__extension__ typedef unsigned __int128 ub16;

constexpr unsigned decimals_per_limb = 19;  // 10^19 < 2^64
constexpr unsigned fives_per_limb = 27;     // 5^27 < 2^64

// Of a number that is not zero.
constexpr int leading_zeros(ub8 n) { return __builtin_clzll(n); }
constexpr int leading_zeros(ub16 n) {
    const auto high = static_cast<ub8>(n >> 64);
    return high != 0 ? leading_zeros(high) : 64 + leading_zeros(static_cast<ub8>(n));
}

constexpr ub8 power(ub8 base, unsigned exponent) {
    ub8 result = 1;
    while (exponent-- > 0) result *= base;
    return result;
}

// limbs /= divisor, least significant limb first; returns the remainder.
inline ub8 divide_limbs(ub8 *limbs, unsigned count, ub8 divisor) {
    ub16 rest = 0;
    for (unsigned i = count; i-- > 0;) {
        rest = rest << 64 | limbs[i];
        limbs[i] = static_cast<ub8>(rest / divisor);
        rest %= divisor;
    }
    return static_cast<ub8>(rest);
}

// Least significant limb first, no zero limb on top. The users' bounds:
// qz_atold: 1024 digits (3402 bits) shifted up as far as a division by 5^1024
// (2378 bits) needs to leave a quotient wider than the mantissa.
// qz_decimal_digits: 5^4985 (11576 bits) times a 113-bit mantissa.
struct Natural {
    ub8 limbs[192];
    unsigned size = 0;

    // cppcheck-suppress uninitMemberVar ; limbs behind `size` are not read
    Natural() = default;
    explicit Natural(ub16 value) {
        for (; value != 0; value >>= 64) limbs[size++] = static_cast<ub8>(value);
    }

    void multiply_add(ub8 factor, ub8 addend) {
        ub16 carry = addend;
        for (unsigned i = 0; i < size; ++i) {
            carry += static_cast<ub16>(limbs[i]) * factor;
            limbs[i] = static_cast<ub8>(carry);
            carry >>= 64;
        }
        if (carry != 0) limbs[size++] = static_cast<ub8>(carry);
    }

    void multiply_by_power_of_5(unsigned exponent) {
        for (; exponent > fives_per_limb; exponent -= fives_per_limb) {
            multiply_add(power(5, fives_per_limb), 0);
        }
        multiply_add(power(5, exponent), 0);
    }

    void shift_limbs_up(unsigned count) {
        std::memmove(limbs + count, limbs, size * sizeof *limbs);
        std::memset(limbs, 0, count * sizeof *limbs);
        size += count;
    }

    void shift_up(unsigned bit_count) {
        multiply_add(ub8{1} << bit_count % 64, 0);
        shift_limbs_up(bit_count / 64);
    }

    // Divides in place; returns whether there was a remainder.
    bool divide(ub8 divisor) {
        const ub8 rest = divide_limbs(limbs, size, divisor);
        while (size > 0 && limbs[size - 1] == 0) --size;
        return rest != 0;
    }

    // Negative, 0 or positive, as this is below, equal to or above `other`.
    int compare(const Natural &other) const {
        if (size != other.size) return size < other.size ? -1 : 1;
        for (unsigned i = size; i-- > 0;) {
            if (limbs[i] != other.limbs[i]) return limbs[i] < other.limbs[i] ? -1 : 1;
        }
        return 0;
    }

    unsigned bits() const {
        return size == 0 ? 0 : 64 * size - static_cast<unsigned>(__builtin_clzll(limbs[size - 1]));
    }

    // Bits `from` and up, 128 of them.
    ub16 bits_from(unsigned from) const {
        ub16 result = 0;
        for (unsigned i = 0; i < 3 && from / 64 + i < size; ++i) {
            const int place = static_cast<int>(64 * i) - static_cast<int>(from % 64);
            const ub16 limb = limbs[from / 64 + i];
            result |= place < 0 ? limb >> -place : place < 128 ? limb << place : 0;
        }
        return result;
    }

    bool any_bit_below(unsigned i) const {
        for (unsigned k = 0; k < i / 64; ++k) {
            if (limbs[k] != 0) return true;
        }
        return i % 64 != 0 && limbs[i / 64] << (64 - i % 64) != 0;
    }
};

}  // namespace natural
