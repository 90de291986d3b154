// The table of powers of ten, computed by the compiler.
#include "oci_utils/power_of_ten.h"

using namespace natural;

namespace {

// 10^(27 j) = (high * 2^64 + low + rest) * 2^exponent with high >= 2^63 and
// 0 <= rest < 1 + 2^-100.
struct Power {
    ub8 high;
    ub8 low;
    int exponent;
};

// The decimal exponents of a quadruple real, denormals included, are -4966 to 4932;
// with 1 to 20 digits, p goes from -4932 to 4985.
constexpr int min_step = -183;
constexpr int max_step = 184;

struct PowerTable {
    Power entry[max_step - min_step + 1];
};

// A 256-bit mantissa, most significant limb first, with the top bit set. Each
// step truncates a relative 2^-255; the longest chain of steps adds up to less
// than 2^-247.
struct Wide {
    ub8 limb[4] = {ub8{1} << 63, 0, 0, 0};
    int exponent = -255;

    // Takes the top 256 bits of five limbs, the first not zero, that stand for `scale` binary
    // places.
    constexpr void set(const ub8 (&from)[5], int scale) {
        const int shift = __builtin_clzll(from[0]);
        for (unsigned i = 0; i < 4; ++i) {
            limb[i] = shift == 0 ? from[i] : from[i] << shift | from[i + 1] >> (64 - shift);
        }
        exponent += scale + 64 - shift;
    }

    constexpr void multiply_by_10_27() {
        ub8 product[5] = {};
        ub16 carry = 0;
        for (unsigned i = 4; i-- > 0;) {
            carry += static_cast<ub16>(limb[i]) * power(5, 27);
            product[i + 1] = static_cast<ub8>(carry);
            carry >>= 64;
        }
        product[0] = static_cast<ub8>(carry);
        set(product, 27);
    }

    constexpr void divide_by_10_27() {
        ub8 quotient[5] = {};
        ub16 rest = 0;
        for (unsigned i = 0; i < 5; ++i) {
            rest = rest << 64 | (i < 4 ? limb[i] : 0);
            quotient[i] = static_cast<ub8>(rest / power(5, 27));
            rest %= power(5, 27);
        }
        set(quotient, -64 - 27);
    }

    constexpr Power rounded() const { return {limb[0], limb[1], exponent + 128}; }
};

constexpr PowerTable powers = [] {
    PowerTable table{};
    Wide up;
    for (int j = 0; j <= max_step; ++j) {
        table.entry[j - min_step] = up.rounded();
        up.multiply_by_10_27();
    }
    Wide down;
    for (int j = -1; j >= min_step; --j) {
        down.divide_by_10_27();
        table.entry[j - min_step] = down.rounded();
    }
    return table;
}();

constexpr struct Fives {
    ub8 power_of_5[fives_per_limb];
} fives = [] {
    Fives table{};
    for (unsigned i = 0; i < fives_per_limb; ++i) table.power_of_5[i] = power(5, i);
    return table;
}();

// The high 128 bits of a product.
ub16 multiply_high(ub16 a, const Power &b) {
    const ub8 a_high = static_cast<ub8>(a >> 64);
    const ub8 a_low = static_cast<ub8>(a);
    const ub16 low = static_cast<ub16>(a_low) * b.low;
    const ub16 middle1 = static_cast<ub16>(a_high) * b.low;
    const ub16 middle2 = static_cast<ub16>(a_low) * b.high;
    const ub16 carry = (low >> 64) + static_cast<ub8>(middle1) + static_cast<ub8>(middle2);
    return static_cast<ub16>(a_high) * b.high + (middle1 >> 64) + (middle2 >> 64) + (carry >> 64);
}

}  // namespace

// With M the high half of mantissa * 5^r, and the table's mantissa A for
// 10^(27 j): M is too low by less than 1, A by less than 1 + 2^-100, and the high
// half of their product by less than 1 for its own truncation and 1 + 2^-100 for
// each of the two, as both are below 2^128.
power_of_ten::Approximation power_of_ten::multiply(ub16 mantissa, int exponent, int p) {
    const int j = (p >= 0 ? p : p - 26) / 27;
    const int r = p - 27 * j;
    const Power &power_of_10 = powers.entry[j - min_step];
    const ub8 five = fives.power_of_5[r];
    const int shift = __builtin_clzll(five);
    const ub16 by_five = multiply_high(mantissa, {five << shift, 0, 0});
    return {multiply_high(by_five, power_of_10),
            exponent + r - shift + 64 + power_of_10.exponent + 128};
}
