// Binary to decimal: the correctly rounded digits of mantissa * 2^exponent, by
// integers alone, so that neither locale nor rounding mode has a part in them.
//
// The value times a power of ten 10^p has the wanted digits before its point, as
// in U. Adams, "Ryu revisited: printf floating point conversion" (2019).
#include "digit_words.h"
#include "oci_utils/natural.h"
#include "oci_utils/oci_utils.h"
#include "oci_utils/power_of_ten.h"

using namespace natural;
using digit_words::word_base;
using real_bits::Mantissa;
using real_bits::mantissa_width;

namespace {

// Whether mantissa * 2^exponent * 10^p is below, at or above `floor` + 1/2.
int compare_with_half(Mantissa mantissa, int exponent, int p, ub16 floor) {
    Natural value(mantissa), half(2 * floor + 1);
    (p > 0 ? value : half).multiply_by_power_of_5(static_cast<unsigned>(p > 0 ? p : -p));
    const int scale = exponent + p + 1;
    (scale > 0 ? value : half).shift_up(static_cast<unsigned>(scale > 0 ? scale : -scale));
    return value.compare(half);
}

struct PowersOfTen {
    ub16 power[21];
};
constexpr PowersOfTen powers_of_ten = [] {
    PowersOfTen table{{1}};
    for (int i = 1; i < 21; ++i) table.power[i] = 10 * table.power[i - 1];
    return table;
}();

// floor(b * log10(2)), exact for the exponents of any long double: the first
// multiple of log10(2) that is nearer to an integer than the constant's error
// lies beyond b = 28738.
// cppcheck-suppress shiftTooManyBits ; the product has 64 bits
int decimal_exponent_of_power_of_2(int b) { return static_cast<int>((sb8{b} * 1292913986) >> 32); }

}  // namespace

extern "C" int qz_decimal_digits(Mantissa mantissa, int exponent, unsigned count, char *digits) {
    const int shift = leading_zeros(mantissa);
    mantissa <<= shift;
    exponent -= shift;

    const ub16 limit = powers_of_ten.power[count];
    // The first guess is right, or one too low when a power of ten lies between
    // the value and the power of two below it.
    int decimal_exponent = decimal_exponent_of_power_of_2(exponent + mantissa_width - 1);
    int p = static_cast<int>(count) - 1 - decimal_exponent;
    constexpr int room = 128 - mantissa_width;
    const ub16 wide = static_cast<ub16>(mantissa) << room;
    auto scaled = power_of_ten::multiply(wide, exponent - room, p);
    if (scaled.bits >> -scaled.exponent >= limit) {
        ++decimal_exponent;
        --p;
        scaled = power_of_ten::multiply(wide, exponent - room, p);
    }

    ub16 number = scaled.bits >> -scaled.exponent;
    const ub16 half = ub16{1} << (-scaled.exponent - 1);
    const ub16 fraction = scaled.bits & (2 * half - 1);
    bool up = fraction > half;
    if (!up && fraction + scaled.below > half) {
        const int order = compare_with_half(mantissa, exponent, p, number);
        up = order > 0 || (order == 0 && (number & 1) != 0);
    }
    if (up && ++number == limit) {
        number = limit / 10;
        ++decimal_exponent;
    }

    const ub8 high = number >> 64 != 0 ? static_cast<ub8>(number / word_base)
                                       : static_cast<ub8>(number) / word_base;
    const auto words = digit_words::split({{high, static_cast<ub8>(number) - high * word_base, 0}});
    char characters[32];
    digit_words::write_characters(characters, words.word[0]);
    digit_words::write_characters(characters + 16, words.word[1]);
    std::memcpy(digits, characters + sizeof characters - count, count);
    return decimal_exponent;
}
