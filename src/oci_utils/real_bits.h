// Reals taken apart into integers and put together: no rounding mode has a part in it.
#pragma once

#include <cstring>
#include <limits>

#include "oratypes.h"

namespace real_bits {

static_assert(sizeof(float) == 4 && sizeof(double) == 8 && sizeof(long double) == 16);

// A real's bits: finite reals are mantissa * 2^exponent.
struct Binary {
    enum class Kind { finite, infinite, nan };
    Kind kind;
    bool negative;
    ub8 mantissa;
    int exponent;
};

// The layout of float and double.
template <class Real, class Bits>
struct Ieee {
    static_assert(sizeof(Real) == sizeof(Bits) && std::numeric_limits<Real>::is_iec559);
    static constexpr int digits = std::numeric_limits<Real>::digits;
    static constexpr int sign_bit = std::numeric_limits<Bits>::digits - 1;
    static constexpr Bits hidden_bit = Bits{1} << (digits - 1);
    static constexpr unsigned max_biased = 2 * std::numeric_limits<Real>::max_exponent - 1;
    // Of the mantissa's last bit in a real whose biased exponent is 0.
    static constexpr int bias = std::numeric_limits<Real>::max_exponent + digits - 2;

    static Binary split(const void *real) {
        Bits bits;
        std::memcpy(&bits, real, sizeof bits);
        const bool negative = bits >> sign_bit != 0;
        const auto biased = static_cast<unsigned>(bits >> (digits - 1)) & max_biased;
        const Bits fraction = bits & (hidden_bit - 1);
        if (biased == max_biased) {
            return {fraction == 0 ? Binary::Kind::infinite : Binary::Kind::nan, negative, 0, 0};
        }
        if (biased == 0) return {Binary::Kind::finite, negative, fraction, 1 - bias};
        return {Binary::Kind::finite, negative, fraction | hidden_bit,
                static_cast<int>(biased) - bias};
    }

    // To nearest, ties to even; for zero, and for a value in the range of normal
    // reals whose mantissa has its top bit set.
    static Bits round(const Binary &value) {
        const auto sign = static_cast<Bits>(Bits{value.negative} << sign_bit);
        if (value.mantissa == 0) return sign;
        constexpr int dropped = 64 - digits;
        constexpr ub8 half = ub8{1} << (dropped - 1);
        ub8 kept = value.mantissa >> dropped;
        const ub8 rest = value.mantissa & (2 * half - 1);
        if (rest > half || (rest == half && (kept & 1) != 0)) ++kept;
        // A carry out of the mantissa adds one to the exponent, where it belongs.
        const int biased = value.exponent + dropped + bias;
        return sign + (static_cast<Bits>(biased) << (digits - 1)) +
               (static_cast<Bits>(kept) - hidden_bit);
    }
};
using Float = Ieee<float, ub4>;
using Double = Ieee<double, ub8>;

// The 80-bit extended layout, its units bit stored, in 16 bytes.
struct LongDouble {
    static_assert(std::numeric_limits<long double>::digits == 64);
    static constexpr size_t used_bytes = 10;
    static constexpr unsigned max_biased = 0x7FFF;
    static constexpr int bias = 16383 + 63;

    static Binary split(const void *real) {
        ub8 mantissa;
        ub2 sign_and_exponent;
        std::memcpy(&mantissa, real, sizeof mantissa);
        std::memcpy(&sign_and_exponent, static_cast<const char *>(real) + sizeof mantissa,
                    sizeof sign_and_exponent);
        const bool negative = sign_and_exponent >> 15 != 0;
        const unsigned biased = sign_and_exponent & max_biased;
        if (biased == max_biased && mantissa << 1 == 0 && mantissa != 0) {
            return {Binary::Kind::infinite, negative, 0, 0};
        }
        // Without the units bit the larger exponents stand for no value.
        if (biased == max_biased || (biased != 0 && mantissa >> 63 == 0)) {
            return {Binary::Kind::nan, negative, 0, 0};
        }
        return {Binary::Kind::finite, negative, mantissa,
                static_cast<int>(biased == 0 ? 1 : biased) - bias};
    }
};

inline Binary split_real(const void *real, uword size) {
    switch (size) {
        case sizeof(float): return Float::split(real);
        case sizeof(double): return Double::split(real);
        default: return LongDouble::split(real);
    }
}

}  // namespace real_bits
