// Binary to decimal: the correctly rounded digits of mantissa * 2^exponent, by
// integers alone, so that neither locale nor rounding mode has a part in them.
//
// The value times a power of ten 10^p has the wanted digits before its point. A
// product with a table's 128-bit power is too low by less than a known bound; it
// tells the rounding but where it falls within that bound of a half. There, exact
// arithmetic compares. The method is that of the fixed-precision conversions in
// U. Adams, "Ryu revisited: printf floating point conversion" (2019), with a
// sparse table as in F. Loitsch, "Printing floating-point numbers quickly and
// accurately with integers" (2010).
#include "oci_utils/natural.h"
#include "oci_utils/oci_utils.h"

using namespace natural;

namespace {

// 10^(27 j) = (high * 2^64 + low + rest) * 2^exponent with high >= 2^63 and
// 0 <= rest < 1 + 2^-100.
struct Power {
    ub8 high;
    ub8 low;
    int exponent;
};

// The decimal exponents of the 80-bit long double, denormals included, are -4951
// to 4932; with 1 to 20 digits that needs p from -4932 to 4970.
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

    // Takes the top 256 bits of five limbs that stand for `scale` binary places.
    constexpr void set(const ub8 (&from)[5], int scale) {
        const unsigned skip = from[0] == 0 ? 1 : 0;
        const int shift = __builtin_clzll(from[skip]);
        for (unsigned i = 0; i < 4; ++i) {
            const ub8 next = i + skip + 1 < 5 ? from[i + skip + 1] : 0;
            limb[i] = shift == 0 ? from[i + skip] : from[i + skip] << shift | next >> (64 - shift);
        }
        exponent += scale + (skip != 0 ? 0 : 64) - shift;
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

// A number and where its binary point is: `point` bits stand behind it. It is
// below the true number by less than `below` of its last bits.
struct Fixed {
    ub16 bits;
    int point;
    static constexpr unsigned below = 3;
};

// mantissa * 2^exponent * 10^p, for a mantissa with its top bit set.
// With M = mantissa * 5^r exact in 128 bits, and 10^(27 j) below its power by
// less than 1 + 2^-100 of 2^128: the high half of the product is below the true
// one by less than 1 for its truncation and M / 2^128 * (1 + 2^-100) for the
// power.
Fixed scale_by_power_of_10(ub8 mantissa, int exponent, int p) {
    const int j = (p >= 0 ? p : p - 26) / 27;
    const int r = p - 27 * j;
    const Power &power_of_10 = powers.entry[j - min_step];
    const ub8 five = fives.power_of_5[r];
    const int shift = __builtin_clzll(five);
    const ub16 product = static_cast<ub16>(mantissa) * (five << shift);
    return {multiply_high(product, power_of_10),
            -(exponent + r - shift + power_of_10.exponent + 128)};
}

// Whether mantissa * 2^exponent * 10^p is below, at or above `floor` + 1/2.
int compare_with_half(ub8 mantissa, int exponent, int p, ub16 floor) {
    Natural value;
    value.multiply_add(0, mantissa);
    Natural half;
    half.multiply_add(0, static_cast<ub8>(floor >> 63));
    half.shift_limbs_up(1);
    half.limbs[0] = static_cast<ub8>(floor << 1) | 1;
    (p > 0 ? value : half).multiply_by_power_of_5(static_cast<unsigned>(p > 0 ? p : -p));
    const int scale = exponent + p + 1;
    (scale > 0 ? value : half).shift_up(static_cast<unsigned>(scale > 0 ? scale : -scale));
    return value.compare(half);
}

// floor(b * log10(2)), exact for the exponents of a long double: the first
// multiple of log10(2) that is nearer to an integer than the constant's error
// lies beyond b = 28738.
int decimal_exponent_of_power_of_2(int b) { return static_cast<int>((sb8{b} * 1292913986) >> 32); }

}  // namespace

extern "C" int qz_decimal_digits(ub8 mantissa, int exponent, unsigned count, char *digits) {
    const int shift = __builtin_clzll(mantissa);
    mantissa <<= shift;
    exponent -= shift;

    ub16 limit = 1;  // 10^count
    for (unsigned i = 0; i < count; ++i) limit *= 10;
    // The first guess is right, or one too low when a power of ten lies between
    // the value and the power of two below it.
    int decimal_exponent = decimal_exponent_of_power_of_2(exponent + 63);
    int p = static_cast<int>(count) - 1 - decimal_exponent;
    Fixed scaled = scale_by_power_of_10(mantissa, exponent, p);
    if (scaled.bits >> scaled.point >= limit) {
        ++decimal_exponent;
        --p;
        scaled = scale_by_power_of_10(mantissa, exponent, p);
    }

    ub16 number = scaled.bits >> scaled.point;
    const ub16 half = ub16{1} << (scaled.point - 1);
    const ub16 fraction = scaled.bits & (2 * half - 1);
    bool up = fraction > half;
    if (!up && fraction + Fixed::below > half) {
        const int order = compare_with_half(mantissa, exponent, p, number);
        up = order > 0 || (order == 0 && (number & 1) != 0);
    }
    if (up && ++number == limit) {
        number = limit / 10;
        ++decimal_exponent;
    }

    constexpr unsigned low_count = 10;
    const ub16 low_limit = 10'000'000'000;
    auto high = static_cast<ub8>(number / low_limit);
    auto low = static_cast<ub8>(number % low_limit);
    for (unsigned i = count; i-- > 0;) {
        ub8 &rest = count - i <= low_count ? low : high;
        digits[i] = static_cast<char>('0' + rest % 10);
        rest /= 10;
    }
    return decimal_exponent;
}
