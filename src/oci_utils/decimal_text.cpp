// The decimal text codec: OCINumber bytes to canonical text and back.
#include <algorithm>
#include <cstring>

#include "oci_utils/digit_text.h"
#include "oci_utils/oci_utils.h"
#include "oci_utils/plain_number.h"

using namespace number_bytes;
using digit_words::Digits;

namespace {

constexpr unsigned max_decimals = 2 * max_digits;

// Writes a word's characters for each eight digits that `count` digits take, so that as many
// as 15 characters stand behind them.
OraText *put_digits(OraText *out, const Digits &d, int count) {
    char *const characters = reinterpret_cast<char *>(out);
    if (count > 0) digit_words::write_characters(characters, d.word[0]);
    if (count > 8) digit_words::write_characters(characters + 16, d.word[1]);
    if (count > 16) digit_words::write_characters(characters + 32, d.word[2]);
    return out + 2 * count;
}

OraText *put_zeros(OraText *out, int count) {
    if (count <= 0) return out;
    std::memset(out, '0', static_cast<size_t>(count));
    return out + count;
}

// Writes the text, and up to `slack` characters behind it.
constexpr int slack = 32;
void write_text(const plain_number::PlainNumber &p, const plain_number::Shape &shape,
                OraText *out) {
    // The point stands between two digits, behind the last with zeros in between, or before the
    // first one.
    *out = '-';
    out += p.negative;
    const int count = static_cast<int>(p.count), integer_digits = p.exponent + 1;
    Digits fraction = p.digits;
    int fraction_count = count;
    if (count > 0 && integer_digits > 0) {
        const unsigned first = digit_at(p.digits, 0);
        *out = static_cast<OraText>('0' + first / 10);
        out += !shape.short_first;
        *out++ = static_cast<OraText>('0' + first % 10);
        const int digits = std::min(integer_digits, int{digit_words::window});
        out = put_digits(out, moved_forward(p.digits, 1), digits - 1);
        out = put_zeros(out, 2 * (integer_digits - digits));
        fraction_count -= integer_digits;
        if (fraction_count > 0) {
            fraction = moved_forward(p.digits, static_cast<unsigned>(integer_digits));
        }
    } else {
        *out++ = '0';
    }
    if (shape.fraction_length > 0) {
        *out++ = '.';
        out = put_zeros(out, -2 * integer_digits);
        put_digits(out, fraction, fraction_count);
    }
}

}  // namespace

extern "C" sword getStrFromNumber(const OCINumber *number, OraText *buf, ub2 *size) {
    plain_number::PlainNumber p;
    if (!plain_number::read(*number, p)) return OCI_ERROR;
    const plain_number::Shape shape = shape_of(p);
    const int length = shape.length(), capacity = *size;
    if (length > capacity) return OCI_ERROR;
    // In place where there is room for whole words; then what stood behind the text comes back.
    if (length + slack <= capacity) [[likely]] {
        OraText behind[slack];
        std::memcpy(behind, buf + length, slack);
        write_text(p, shape, buf);
        std::memcpy(buf + length, behind, slack);
    } else {
        constexpr int longest = 3 + 2 * (-min_exponent + int{max_digits});
        OraText text[longest + slack];
        write_text(p, shape, text);
        std::memcpy(buf, text, static_cast<size_t>(length));
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

    Digits digits;
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
