// Reals taken apart into integers and put together: what the machine's floating-point unit is
// set to (rounding mode, flush to zero, precision) has no part in it.
#pragma once

#include <cstring>
#include <limits>
#include <type_traits>

#include "oci_utils/natural.h"
#include "oratypes.h"

namespace real_bits {

static_assert(sizeof(float) == 4 && sizeof(double) == 8);

// The long double is the 80-bit extended format or IEEE's quadruple, both in 16 bytes. One of
// another kind, equal to double or a pair of them, is not converted; what a calculation
// needs one for is done in double then.
using LongDoubleLimits = std::numeric_limits<long double>;

// A mantissa of the widest of these reals.
using Mantissa = std::conditional_t<LongDoubleLimits::digits == 113, natural::ub16, ub8>;
inline constexpr int mantissa_width = 8 * sizeof(Mantissa);

// A real's bits: finite reals are mantissa * 2^exponent.
struct Binary {
    enum class Kind { finite, infinite, nan };
    Kind kind;
    bool negative;
    Mantissa mantissa;
    int exponent;
};

// The value with the top bit of its mantissa set; for a finite one that is not zero.
inline Binary normalized(Binary value) {
    const int shift = natural::leading_zeros(value.mantissa);
    value.mantissa <<= shift;
    value.exponent -= shift;
    return value;
}

// The layout of float, double and quadruple: sign, biased exponent, mantissa without its top bit.
template <class Real, class Bits>
struct Ieee {
    using Limits = std::numeric_limits<Real>;
    static_assert(sizeof(Real) == sizeof(Bits) && Limits::is_iec559);
    static constexpr uword size = sizeof(Real);
    static constexpr int digits = Limits::digits;
    static constexpr int sign_bit = 8 * sizeof(Bits) - 1;
    static constexpr Bits hidden_bit = Bits{1} << (digits - 1);
    static constexpr unsigned max_biased = 2 * Limits::max_exponent - 1;
    // Of the mantissa's last bit in a real whose biased exponent is 0.
    static constexpr int bias = Limits::max_exponent + digits - 2;
    // Bits of a mantissa that are more than this real holds.
    static constexpr int dropped = mantissa_width - digits;

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

    // Whether a normalized value lies between the least normal and the largest real.
    static bool holds(const Binary &value) {
        constexpr Mantissa largest = ~Mantissa{0} << dropped;
        constexpr int top = Limits::max_exponent - mantissa_width;
        constexpr int bottom = Limits::min_exponent - mantissa_width;
        return value.exponent >= bottom &&
               (value.exponent < top || (value.exponent == top && value.mantissa <= largest));
    }

    // Rounds to nearest, ties to even: zero, or a normalized value that this real holds.
    static void store(const Binary &value, void *real) {
        auto bits = static_cast<Bits>(Bits{value.negative} << sign_bit);
        if (value.mantissa != 0) {
            constexpr Mantissa half = Mantissa{1} << (dropped - 1);
            Mantissa kept = value.mantissa >> dropped;
            const Mantissa rest = value.mantissa & (2 * half - 1);
            if (rest > half || (rest == half && (kept & 1) != 0)) ++kept;
            // A carry out of the mantissa adds one to the exponent, where it belongs.
            const int biased = value.exponent + dropped + bias;
            bits += (static_cast<Bits>(biased) << (digits - 1)) +
                    (static_cast<Bits>(kept) - hidden_bit);
        }
        std::memcpy(real, &bits, sizeof bits);
    }
};
using Float = Ieee<float, ub4>;
using Double = Ieee<double, ub8>;

// The 80-bit extended layout, its units bit stored, in 16 bytes.
struct Extended {
    static constexpr uword size = 16;
    static constexpr int digits = 64;
    static constexpr unsigned max_biased = 0x7FFF;
    static constexpr int bias = 16383 + 63;

    // With a biased exponent of 0 the units bit counts, as it does to the processor. The C
    // library's printf leaves it out, unless it is the only bit; as a number both are zero.
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

    // The values here are far from the ends of its range.
    static bool holds(const Binary &) { return true; }

    // Zero or a normalized value. The six bytes that it does not use are zero.
    static void store(const Binary &value, void *real) {
        const int biased = value.mantissa == 0 ? 0 : value.exponent + bias;
        const ub8 words[2] = {static_cast<ub8>(value.mantissa),
                              ub8{value.negative} << 15 | static_cast<ub8>(biased)};
        std::memcpy(real, words, sizeof words);
    }
};

// Of the long double, by its digits.
template <int digits, class Real>
struct LayoutOf {
    using type = Double;
};
template <class Real>
struct LayoutOf<64, Real> {
    using type = Extended;
};
template <class Real>
struct LayoutOf<113, Real> {
    using type = Ieee<Real, natural::ub16>;
};
using LongDouble = LayoutOf<LongDoubleLimits::digits, long double>::type;

inline Binary split_real(const void *real, uword size) {
    switch (size) {
        case Float::size: return Float::split(real);
        case Double::size: return Double::split(real);
        default: return LongDouble::split(real);
    }
}

}  // namespace real_bits
