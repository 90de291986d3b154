// Text scanners: integers and floating point, whatever the process's locale.
#include <cmath>
#include <cstring>
#include <limits>

#include "oci_utils/oci_utils.h"

namespace {

bool is_digit(char c) { return c >= '0' && c <= '9'; }

}  // namespace

extern "C" long long my_strtoll10(const char *nptr, char **endptr, int *error) {
    constexpr int no_digit = 33;
    constexpr int out_of_range = 34;
    const char *p = nptr;
    const char *const end = *endptr;
    const bool negative = p != end && *p == '-';
    if (p != end && (*p == '-' || *p == '+')) ++p;
    const char *const digits = p;

    ub8 value = 0;
    bool overflow = false;
    constexpr ptrdiff_t safe_digits = 19;  // 10^19 < 2^64
    const char *const safe_end = end - p > safe_digits ? p + safe_digits : end;
    for (; p != safe_end && is_digit(*p); ++p) value = value * 10 + static_cast<ub8>(*p - '0');
    for (; p != end && is_digit(*p); ++p) {
        overflow |= __builtin_mul_overflow(value, ub8{10}, &value);
        overflow |= __builtin_add_overflow(value, static_cast<ub8>(*p - '0'), &value);
    }
    if (p == digits) {
        *error = no_digit;
        return 0;
    }
    if (overflow || (negative && value > ub8{1} << 63)) {
        *error = out_of_range;
        return 0;
    }
    *error = negative && value != 0 ? -1 : 0;
    return static_cast<long long>(negative ? -value : value);
}

namespace {

__extension__ typedef unsigned __int128 ub16;

constexpr unsigned max_decimals = 1024;
constexpr unsigned decimals_per_limb = 19;  // 10^19 < 2^64
constexpr unsigned fives_per_limb = 27;     // 5^27 < 2^64
constexpr int mantissa_bits = std::numeric_limits<long double>::digits;

constexpr ub8 power(ub8 base, unsigned exponent) {
    ub8 result = 1;
    while (exponent-- > 0) result *= base;
    return result;
}

// A natural number, least significant limb first. Room for max_decimals digits
// (3402 bits), shifted up as far as a division by 5^max_decimals (2378 bits)
// needs to leave a quotient wider than the mantissa.
struct Natural {
    ub8 limbs[96];
    unsigned size = 0;

    void multiply_add(ub8 factor, ub8 addend) {
        ub16 carry = addend;
        for (unsigned i = 0; i < size; ++i) {
            carry += static_cast<ub16>(limbs[i]) * factor;
            limbs[i] = static_cast<ub8>(carry);
            carry >>= 64;
        }
        if (carry != 0) limbs[size++] = static_cast<ub8>(carry);
    }

    void shift_limbs_up(unsigned count) {
        std::memmove(limbs + count, limbs, size * sizeof *limbs);
        std::memset(limbs, 0, count * sizeof *limbs);
        size += count;
    }

    // Divides in place; returns whether there was a remainder.
    bool divide(ub8 divisor) {
        ub16 rest = 0;
        for (unsigned i = size; i-- > 0;) {
            rest = rest << 64 | limbs[i];
            limbs[i] = static_cast<ub8>(rest / divisor);
            rest %= divisor;
        }
        while (size > 0 && limbs[size - 1] == 0) --size;
        return rest != 0;
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

// (n + rest) * 2^scale to nearest, ties to even, where 0 <= rest < 1 is not zero
// exactly when `inexact`, and n is wider than the mantissa then. Rounds with
// integers alone, so the rounding mode has no part in it.
long double round_to_long_double(const Natural &n, bool inexact, int scale) {
    static_assert(mantissa_bits < 128);
    const unsigned bits = n.bits();
    const unsigned dropped = bits > mantissa_bits ? bits - mantissa_bits : 0;
    ub16 mantissa = n.bits_from(dropped);
    if (dropped > 0 && (n.bits_from(dropped - 1) & 1) != 0 &&
        (inexact || (mantissa & 1) != 0 || n.any_bit_below(dropped - 1))) {
        ++mantissa;
    }
    // Both halves and their sum are exact.
    const long double high = static_cast<long double>(static_cast<ub8>(mantissa >> 64));
    const long double low = static_cast<long double>(static_cast<ub8>(mantissa));
    return std::ldexp(high * 0x1p64L + low, scale + static_cast<int>(dropped));
}

}  // namespace

extern "C" long double qz_atold(const char *start, const char *end, int *error) {
    *error = 1;
    const char *p = start;
    const bool negative = p != end && *p == '-';
    if (negative) ++p;

    // All digits without the point as one number, in chunks of a limb.
    Natural n;
    ub8 chunk = 0;
    unsigned chunk_decimals = 0;
    unsigned decimals = 0;
    unsigned fraction_decimals = 0;
    bool any_digit = false;
    bool point = false;
    for (; p != end; ++p) {
        if (*p == '.' && !point) {
            point = true;
            continue;
        }
        if (!is_digit(*p)) return 0;
        any_digit = true;
        if (decimals > 0 || *p != '0') ++decimals;
        if (point) ++fraction_decimals;
        if (decimals > max_decimals || fraction_decimals > max_decimals) return 0;
        chunk = chunk * 10 + static_cast<ub8>(*p - '0');
        if (++chunk_decimals == decimals_per_limb) {
            n.multiply_add(power(10, decimals_per_limb), chunk);
            chunk = 0;
            chunk_decimals = 0;
        }
    }
    if (!any_digit) return 0;
    n.multiply_add(power(10, chunk_decimals), chunk);
    *error = 0;

    // n / 10^k = n * 2^s / 5^k * 2^(-s-k), with s such that the quotient keeps
    // more bits than the mantissa. Floors of floors divide by the product.
    bool inexact = false;
    int scale = 0;
    if (n.size > 0 && fraction_decimals > 0) {
        const unsigned divisor_bits = fraction_decimals * 7 / 3 + 1;  // log2(5) < 7/3
        const unsigned wanted = divisor_bits + mantissa_bits + 2;
        const unsigned bits = n.bits();
        const unsigned shift = bits < wanted ? (wanted - bits + 63) / 64 : 0;
        n.shift_limbs_up(shift);
        scale = -static_cast<int>(64 * shift + fraction_decimals);
        for (unsigned k = fraction_decimals; k > 0;) {
            const unsigned step = k < fives_per_limb ? k : fives_per_limb;
            inexact |= n.divide(power(5, step));
            k -= step;
        }
    }
    const long double magnitude = round_to_long_double(n, inexact, scale);
    return negative ? -magnitude : magnitude;
}
