// Text scanners: integers and floating point, whatever the process's locale.
#include "oci_utils/natural.h"
#include "oci_utils/oci_utils.h"
#include "oci_utils/power_of_ten.h"

using namespace natural;
using namespace real_bits;

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

constexpr unsigned max_decimals = 1024;
constexpr int mantissa_bits = LongDouble::digits;

// mantissa * 2^exponent, `up` by one in the mantissa, normalized.
Binary rounded(Mantissa mantissa, bool up, int exponent) {
    constexpr int shift = mantissa_width - mantissa_bits;
    mantissa <<= shift;
    exponent -= shift;
    if (up) {
        mantissa += Mantissa{1} << shift;
        if (mantissa == 0) {
            mantissa = Mantissa{1} << (mantissa_width - 1);
            ++exponent;
        }
    }
    return {Binary::Kind::finite, false, mantissa, exponent};
}

// The digits of a decimal text: an integer over 10^fraction.
struct ScannedDigits {
    const char *begin;  // of the first digit that is not zero; one point may be inside
    const char *end;
    unsigned count;
    unsigned fraction;
};

// The nearest long double by exact arithmetic, for any number of digits but none.
Binary exact_long_double(const ScannedDigits &digits) {
    Natural n;
    for (const char *p = digits.begin; p != digits.end;) {
        ub8 chunk = 0;
        unsigned chunk_decimals = 0;
        for (; p != digits.end && chunk_decimals < decimals_per_limb; ++p) {
            if (*p == '.') continue;
            chunk = chunk * 10 + static_cast<ub8>(*p - '0');
            ++chunk_decimals;
        }
        n.multiply_add(power(10, chunk_decimals), chunk);
    }

    // n / 10^k = n * 2^s / 5^k * 2^(-s-k), with s such that the quotient keeps
    // more bits than the mantissa. Floors of floors divide by the product.
    const unsigned divisor_bits = digits.fraction * 7 / 3 + 1;  // log2(5) < 7/3
    const unsigned wanted = divisor_bits + mantissa_bits + 2;
    const unsigned bits = n.bits();
    const unsigned shift = bits < wanted ? (wanted - bits + 63) / 64 : 0;
    n.shift_limbs_up(shift);
    bool inexact = false;
    for (unsigned k = digits.fraction; k > 0;) {
        const unsigned step = k < fives_per_limb ? k : fives_per_limb;
        inexact |= n.divide(power(5, step));
        k -= step;
    }

    // To nearest, ties to even.
    const unsigned dropped = n.bits() - mantissa_bits;
    const auto mantissa = static_cast<Mantissa>(n.bits_from(dropped));
    const bool up = (n.bits_from(dropped - 1) & 1) != 0 &&
                    (inexact || (mantissa & 1) != 0 || n.any_bit_below(dropped - 1));
    return rounded(mantissa, up,
                   static_cast<int>(dropped) - static_cast<int>(64 * shift + digits.fraction));
}

}  // namespace

bool qz_nearest_long_double(ub16 value, int exponent, Binary *result) {
    const int zeros = leading_zeros(value);
    const auto product = power_of_ten::multiply(value << zeros, -zeros, exponent);
    const int dropped = 128 - mantissa_bits - leading_zeros(product.bits);
    const ub16 half = ub16{1} << (dropped - 1);
    const ub16 rest = product.bits & (2 * half - 1);
    if (rest <= half && rest + product.below > half) return false;
    *result = rounded(static_cast<Mantissa>(product.bits >> dropped), rest > half,
                      product.exponent + dropped);
    return true;
}

extern "C" long double qz_atold(const char *start, const char *end, int *error) {
    *error = 1;
    const char *p = start;
    const bool negative = p != end && *p == '-';
    if (negative) ++p;

    const char *point = nullptr;
    const char *const all = p;
    for (; p != end && (*p == '0' || (*p == '.' && point == nullptr)); ++p) {
        if (*p == '.') point = p;
    }
    ScannedDigits digits{p, end, 0, 0};
    // The first digits as one number, in two limbs, and the count of the others.
    const auto take = [&](ptrdiff_t most, unsigned &count) {
        ub8 value = 0;
        const char *first = p;
        const char *limit = end - p > most ? p + most : end;
        for (; p != limit; ++p) {
            if (is_digit(*p)) {
                value = value * 10 + static_cast<ub8>(*p - '0');
            } else if (*p == '.' && point == nullptr) {
                point = p;
                ++first;
                if (limit != end) ++limit;
            } else {
                break;
            }
        }
        count = static_cast<unsigned>(p - first);
        return value;
    };
    unsigned high_count, low_count, rest_count;
    const ub8 high = take(decimals_per_limb, high_count);
    const ub8 low = take(decimals_per_limb, low_count);
    take(max_decimals, rest_count);
    if (p != end) return 0;
    digits.count = high_count + low_count + rest_count;
    const size_t length = static_cast<size_t>(end - all);
    const size_t fraction = point == nullptr ? 0 : static_cast<size_t>(end - point) - 1;
    if (length == (point == nullptr ? 0 : 1) || digits.count > max_decimals ||
        fraction > max_decimals) {
        return 0;
    }
    digits.fraction = static_cast<unsigned>(fraction);

    Binary value{Binary::Kind::finite, negative, 0, 0};
    if (digits.count > 0) {
        if (rest_count > 0 ||
            !qz_nearest_long_double(static_cast<ub16>(high) * power(10, low_count) + low,
                                    -static_cast<int>(digits.fraction), &value)) {
            value = exact_long_double(digits);
        }
        if (!LongDouble::holds(value)) return 0;
        value.negative = negative;
    }
    *error = 0;
    std::conditional_t<LongDouble::size == 16, long double, double> result;
    LongDouble::store(value, &result);
    return result;
}
