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

// Writes at the end of a text.
class TextWriter {
public:
    explicit TextWriter(OraText *out) : out_(out) {}
    void put(char c) { *out_++ = static_cast<OraText>(c); }
    void put_pair(unsigned digit) {
        std::memcpy(out_, digit_pairs.text + 2 * digit, 2);
        out_ += 2;
    }
    void put_zeros(int count) {
        if (count <= 0) return;
        std::memset(out_, '0', static_cast<size_t>(count));
        out_ += count;
    }

private:
    OraText *out_;
};

sword put_zero_value(OraText *buf, ub2 *size) {
    if (*size < 1) return OCI_ERROR;
    buf[0] = '0';
    *size = 1;
    return OCI_SUCCESS;
}

}  // namespace

extern "C" sword getStrFromNumber(const OCINumber *number, OraText *buf, ub2 *size) {
    if (!has_valid_length(*number)) return OCI_ERROR;
    if (is_zero(*number)) return put_zero_value(buf, size);
    // An infinity has no digit byte, or one out of range.
    const int stored = static_cast<int>(digit_count(*number));
    if (stored == 0) return OCI_ERROR;
    const bool negative = is_negative(*number);
    ub1 digits[max_digits];
    for (unsigned i = 0; i < max_digits; ++i) {
        digits[i] = decode_digit(negative, number->OCINumberPart[2 + i]);
    }
    bool out_of_range = false;
    for (int i = 0; i < stored; ++i) out_of_range |= digits[i] > 99;
    if (out_of_range) return OCI_ERROR;
    // Zero digits at both ends are no part of the text, whatever form is stored.
    int first = 0;
    int end = stored;
    while (end > 0 && digits[end - 1] == 0) --end;
    if (end == 0) return put_zero_value(buf, size);
    while (digits[first] == 0) ++first;

    // The point stands between two digits: behind this many of them, or before
    // the first one with zeros behind it.
    const int exponent = real_exponent(number->OCINumberPart[1]) - first;
    const int count = end - first;
    const int integer_digits = exponent + 1;
    const bool short_first = integer_digits > 0 && digits[first] < 10;
    const bool has_fraction = count > integer_digits;
    const bool short_last = has_fraction && digits[end - 1] % 10 == 0;
    const int integer_length = integer_digits > 0 ? 2 * integer_digits - short_first : 1;
    const int fraction_length = has_fraction ? 1 + 2 * (count - integer_digits) - short_last : 0;
    const int length = negative + integer_length + fraction_length;
    if (length > *size) return OCI_ERROR;

    TextWriter out(buf);
    if (negative) out.put('-');
    int i = first;
    if (integer_digits > 0) {
        if (short_first) out.put(static_cast<char>('0' + digits[i++]));
        for (const int stop = std::min(end, first + integer_digits); i < stop; ++i) {
            out.put_pair(digits[i]);
        }
        out.put_zeros(2 * (integer_digits - count));
    } else {
        out.put('0');
    }
    if (has_fraction) {
        out.put('.');
        out.put_zeros(-2 * integer_digits);
        for (; i < end - short_last; ++i) out.put_pair(digits[i]);
        if (short_last) out.put(static_cast<char>('0' + digits[i] / 10));
    }
    *size = static_cast<ub2>(length);
    return OCI_SUCCESS;
}

namespace {

// The parts of an accepted text.
struct TextParts {
    bool negative;
    const ub1 *integer;  // integer digits, from the first that is not zero
    const ub1 *integer_end;
    const ub1 *fraction;
    const ub1 *fraction_end;
};

bool is_digit(ub1 c) { return static_cast<ub1>(c - '0') < 10; }

bool split(const ub1 *p, const ub1 *end, TextParts &text) {
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
    TextParts text;
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
        // Behind more zeros than 128 not even a carry reaches 10^-128.
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

    OCINumber value;
    DigitView digits = new_digits(value, text.negative, exponent);
    const unsigned count = std::min(static_cast<unsigned>(out - places + 1) / 2, max_digits);
    for (unsigned i = 0; i < count; ++i) {
        digits.append(static_cast<unsigned>((places[2 * i] - '0') * 10 + places[2 * i + 1] - '0'));
    }
    if (places[max_decimals] >= '5') round_up(digits);
    trim(digits);

    if (finish(digits) == Finished::infinity) return OCI_ERROR;
    std::memcpy(number, &value, value.OCINumberPart[0] + 1u);
    return OCI_SUCCESS;
}
