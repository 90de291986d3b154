// The decimal text codec: OCINumber bytes to canonical text and back.
#include <algorithm>
#include <cstring>

#include "oci_utils/digit_text.h"
#include "oci_utils/oci_utils.h"
#include "oci_utils/plain_number.h"

using namespace number_bytes;

namespace {

constexpr unsigned max_decimals = 2 * max_digits;

// Writes a text's characters in turn, pairs of them for the digits in turn.
class TextWriter {
public:
    TextWriter(OraText *out, const digit_words::Digits &digits) : out_(out) {
        for (unsigned i = 0; i < 3; ++i) digit_words::store(digits_ + 8 * i, digits.word[i]);
    }
    void put(char c) { *out_++ = static_cast<OraText>(c); }
    void put_zeros(int count) {
        if (count <= 0) return;
        std::memset(out_, '0', static_cast<size_t>(count));
        out_ += count;
    }
    void put_digits(int count) {
        for (; count > 0; --count, out_ += 2) {
            std::memcpy(out_, plain_number::digit_pairs.text + 2 * digits_[next_++], 2);
        }
    }
    void put_first_ones() { put(static_cast<char>('0' + digits_[next_++])); }
    void put_last_tens() { put(static_cast<char>('0' + digits_[next_++] / 10)); }

private:
    OraText *out_;
    unsigned next_ = 0;
    ub1 digits_[digit_words::window];
};

}  // namespace

extern "C" sword getStrFromNumber(const OCINumber *number, OraText *buf, ub2 *size) {
    plain_number::PlainNumber p;
    if (!plain_number::read(*number, p)) return OCI_ERROR;
    const plain_number::Shape shape = shape_of(p);
    if (shape.length() > *size) return OCI_ERROR;

    // The point stands between two digits, behind the last with zeros in between, or before the
    // first one.
    const int count = static_cast<int>(p.count), integer_digits = p.exponent + 1;
    TextWriter out(buf, p.digits);
    if (p.negative) out.put('-');
    int integer_count = 0;
    if (count > 0 && integer_digits > 0) {
        integer_count = std::min(count, integer_digits);
        if (shape.short_first) out.put_first_ones();
        out.put_digits(integer_count - shape.short_first);
        out.put_zeros(2 * (integer_digits - count));
    } else {
        out.put('0');
    }
    if (shape.fraction_length > 0) {
        out.put('.');
        out.put_zeros(-2 * integer_digits);
        out.put_digits(count - integer_count - shape.short_last);
        if (shape.short_last) out.put_last_tens();
    }
    *size = static_cast<ub2>(shape.length());
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

bool split(const ub1 *p, const ub1 *end, TextParts &text) {
    while (p != end && *p == ' ') ++p;
    text.negative = p != end && *p == '-';
    if (text.negative) ++p;
    const ub1 *const digits = p;
    while (p != end && *p == '0') ++p;
    text.integer = p;
    p = digit_text::skip_digits(p, end);
    text.integer_end = p;
    bool any = p != digits;
    if (p != end && *p == '.') {
        text.fraction = ++p;
        p = digit_text::skip_digits(p, end);
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

    // Decimal places from the first pair on, with zeros where the text has none, as far as a
    // number keeps them and one more, which decides the rounding.
    char places[2 * digit_words::window];
    std::memset(places, '0', sizeof places);
    char *out = places + short_pair;
    const auto take = [&](const ub1 *from, const ub1 *to) {
        const ptrdiff_t n = std::min<ptrdiff_t>(to - from, places + max_decimals + 1 - out);
        std::memcpy(out, from, static_cast<size_t>(n));
        out += n;
    };
    take(text.integer, text.integer_end);
    take(fraction, text.fraction_end);

    digit_words::Digits digits;
    for (int i = 0; i < 3; ++i) digits.word[i] = digit_text::digits_of(places + 16 * i);
    digits.word[2] &= ~ub8{0} << 32;
    if (places[max_decimals] >= '5' && add_unit(digits, max_digits - 1)) {
        add_to_digit(digits, 0, 1);
        ++exponent;
    }
    if (exponent > max_exponent) return OCI_ERROR;
    const unsigned count = significant(digits);
    if (is_in_range(exponent)) write_first_digits(*number, text.negative, digits, count);
    finish(*number, text.negative, exponent, count);
    return OCI_SUCCESS;
}
