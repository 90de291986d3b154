// The decimal text codec: OCINumber bytes to canonical text and back.
#include <algorithm>
#include <cstring>

#include "number_bytes.h"
#include "oci_utils/oci_utils.h"

using namespace number_bytes;

namespace {

// "00" to "99".
struct PairTable {
    char text[200];
};
constexpr PairTable digit_pairs = [] {
    PairTable table{};
    for (unsigned i = 0; i < 100; ++i) {
        table.text[2 * i] = static_cast<char>('0' + i / 10);
        table.text[2 * i + 1] = static_cast<char>('0' + i % 10);
    }
    return table;
}();

constexpr unsigned max_decimals = 2 * max_digits;

}  // namespace

extern "C" sword getStrFromNumber(const OCINumber *number, OraText *buf, ub2 *size) {
    if (!has_valid_length(*number)) return OCI_ERROR;
    if (is_zero(*number)) {
        if (*size < 1) return OCI_ERROR;
        buf[0] = '0';
        *size = 1;
        return OCI_SUCCESS;
    }
    // An infinity has no digit byte, or one out of range.
    unsigned count = digit_count(*number);
    if (count == 0) return OCI_ERROR;
    const bool negative = is_negative(*number);
    int exponent = real_exponent(number->OCINumberPart[1]);
    const ub1 *bytes = number->OCINumberPart + 2;

    // The digits as decimal text, two places each.
    char decimals[max_decimals];
    ub1 out_of_range = 0;
    for (unsigned i = 0; i < count; ++i) {
        const ub1 digit = decode_digit(negative, bytes[i]);
        out_of_range |= digit > 99;
        std::memcpy(decimals + 2 * i, digit_pairs.text + 2 * (digit % 100), 2);
    }
    if (out_of_range) return OCI_ERROR;

    // Zero digits at both ends are no part of the text, whatever form is stored.
    const char *first = decimals;
    const char *last = decimals + 2 * count;
    while (first != last && *first == '0') ++first;
    while (last != first && last[-1] == '0') --last;
    if (first == last) {
        if (*size < 1) return OCI_ERROR;
        buf[0] = '0';
        *size = 1;
        return OCI_SUCCESS;
    }
    // Places of the text's digits before the point; negative: zeros behind it.
    const int point = 2 * (exponent + 1) - static_cast<int>(first - decimals);
    const int digits = static_cast<int>(last - first);

    const int integer_length = point > 0 ? point : 1;
    const int fraction_length = digits > point ? digits - point : 0;
    const int length = negative + integer_length + (fraction_length > 0 ? 1 + fraction_length : 0);
    if (length > *size) return OCI_ERROR;

    OraText *out = buf;
    const auto put = [&out](const char *text, int n) {
        std::memcpy(out, text, static_cast<size_t>(n));
        out += n;
    };
    const auto put_zeros = [&out](int n) {
        std::memset(out, '0', static_cast<size_t>(n));
        out += n;
    };
    if (negative) *out++ = '-';
    if (point <= 0) {
        *out++ = '0';
        *out++ = '.';
        put_zeros(-point);
        put(first, digits);
    } else if (digits <= point) {
        put(first, digits);
        put_zeros(point - digits);
    } else {
        put(first, point);
        *out++ = '.';
        put(first + point, digits - point);
    }
    *size = static_cast<ub2>(length);
    return OCI_SUCCESS;
}

namespace {

// The parts of an accepted text.
struct DecimalText {
    bool negative;
    const ub1 *integer;  // integer digits, from the first that is not zero
    const ub1 *integer_end;
    const ub1 *fraction;
    const ub1 *fraction_end;
};

bool is_digit(ub1 c) { return static_cast<ub1>(c - '0') < 10; }

bool split(const ub1 *p, const ub1 *end, DecimalText &text) {
    while (p != end && *p == ' ') ++p;
    text.negative = p != end && *p == '-';
    if (text.negative) ++p;
    const ub1 *const digits = p;
    while (p != end && *p == '0') ++p;
    text.integer = p;
    while (p != end && is_digit(*p)) ++p;
    text.integer_end = p;
    bool any = p != digits;
    if (p != end && *p == '.') {
        text.fraction = ++p;
        while (p != end && is_digit(*p)) ++p;
        any |= p != text.fraction;
    } else {
        text.fraction = p;
    }
    text.fraction_end = p;
    return any && p == end;
}

}  // namespace

extern "C" sword getNumberFromStr(OCINumber *number, ub1 *str, ub4 len) {
    DecimalText text;
    if (!split(str, str + len, text)) return OCI_ERROR;

    // Real exponent of the first digit pair, and whether it has one place only.
    int exponent;
    bool short_pair;
    const ub1 *fraction = text.fraction;
    const ptrdiff_t integer_places = text.integer_end - text.integer;
    if (integer_places > 0) {
        if (integer_places > 2 * (max_exponent + 1)) return OCI_ERROR;
        exponent = static_cast<int>((integer_places - 1) / 2);
        short_pair = integer_places % 2 != 0;
    } else {
        while (fraction != text.fraction_end && *fraction == '0') ++fraction;
        const ptrdiff_t zeros = fraction - text.fraction;
        // Half of 10^-128 has 128 zeros; with more the value is below that.
        if (fraction == text.fraction_end || zeros > 2 * -min_exponent) {
            set_zero(*number);
            return OCI_SUCCESS;
        }
        exponent = -static_cast<int>(zeros / 2) - 1;
        short_pair = zeros % 2 != 0;
    }

    // Decimal places from the first pair on, with zeros where the text has none,
    // and the place after the last pair that a number keeps, which decides the
    // rounding.
    ub1 places[max_decimals + 1];
    std::memset(places, '0', sizeof places);
    ub1 *out = places + short_pair;
    ub1 *const out_end = places + sizeof places;
    const auto take = [&](const ub1 *from, const ub1 *to) {
        const ptrdiff_t n = std::min(to - from, out_end - out);
        std::memcpy(out, from, static_cast<size_t>(n));
        out += n;
    };
    take(text.integer, text.integer_end);
    take(fraction, text.fraction_end);

    Digits digits{text.negative, exponent, 0, {}};
    digits.count = std::min(static_cast<unsigned>(out - places + 1) / 2, max_digits);
    for (unsigned i = 0; i < max_digits; ++i) {
        digits.digit[i] = static_cast<ub1>((places[2 * i] - '0') * 10 + (places[2 * i + 1] - '0'));
    }
    if (places[max_decimals] >= '5') round_up(digits);
    trim(digits);

    if (digits.exponent > max_exponent) return OCI_ERROR;
    if (digits.exponent < min_exponent) {
        set_zero(*number);
    } else {
        pack(digits, *number);
    }
    return OCI_SUCCESS;
}
