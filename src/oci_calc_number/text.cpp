// Decimal text of a record, for the debug printer.
#include <cstdio>
#include <cstring>

#include "oci_calc_number/record.h"

namespace {

using digit_words::window;

constexpr int max_digits = 2 * window;
// Powers of ten of the first digit that are written without an exponent.
constexpr int plain_low = -7;
constexpr int plain_high = 39;

// The value d.ddd * 10^exponent; first and last digit are not 0.
struct Shown {
    char digits[max_digits];
    int count;
    int exponent;
};

// False for digits that no function of the engine leaves: a first of zero, one above 99.
bool read_digits(const QZCICalcNumber &n, Shown &d) {
    const calc::Digits packed = calc::digits_of(n);
    for (unsigned i = 0; i < window; ++i) {
        if (digit_at(packed, i) > 99) return false;
    }
    if (digit_at(packed, 0) == 0) return false;
    char text[max_digits];
    for (unsigned i = 0; i < window; ++i) {
        const unsigned digit = digit_at(packed, i);
        text[2 * i] = static_cast<char>('0' + digit / 10);
        text[2 * i + 1] = static_cast<char>('0' + digit % 10);
    }
    // cppcheck-suppress uninitvar ; the window is not empty
    const int first = text[0] == '0' ? 1 : 0;
    int length = max_digits;
    while (text[length - 1] == '0') --length;
    d.count = length - first;
    d.exponent = 2 * calc::exponent_of(n) + 1 - first;
    std::memcpy(d.digits, text + first, static_cast<size_t>(d.count));
    return true;
}

// Rounds half away from zero to `count` digits, 0 < count < d.count.
void round_digits(Shown &d, int count) {
    const bool up = d.digits[count] >= '5';
    d.count = count;
    if (up) {
        while (d.count > 0 && d.digits[d.count - 1] == '9') --d.count;
        if (d.count == 0) {
            d.digits[d.count++] = '1';
            ++d.exponent;
        } else {
            ++d.digits[d.count - 1];
        }
    }
    while (d.digits[d.count - 1] == '0') --d.count;
}

// How many digits of d a text of `room` characters holds in the plain form; d.count
// when all do, 0 when the integer digits or the first digit do not fit.
int fitting_plain(const Shown &d, int room) {
    const int integer = d.exponent < 0 ? 1 : d.exponent + 1;
    if (integer > room) return 0;
    if (d.count <= d.exponent + 1) return d.count;
    // A point without a digit behind it is not written.
    const int fraction = room - integer - 1;
    const int fits = d.exponent + 1 + (fraction > 0 ? fraction : 0);
    return fits < 0 ? 0 : fits < d.count ? fits : d.count;
}

int fitting_scientific(const Shown &d, int room) {
    const int left = room - std::snprintf(nullptr, 0, "E%d", d.exponent);
    if (left < 1) return 0;
    const int fits = left > 2 ? left - 1 : 1;
    return fits < d.count ? fits : d.count;
}

char *write_plain(char *out, const Shown &d) {
    if (d.exponent < 0) {
        *out++ = '0';
        *out++ = '.';
        for (int i = -1; i > d.exponent; --i) *out++ = '0';
    }
    for (int i = 0; i < d.count || i <= d.exponent; ++i) {
        if (i > 0 && i == d.exponent + 1) *out++ = '.';
        *out++ = i < d.count ? d.digits[i] : '0';
    }
    return out;
}

char *write_scientific(char *out, const Shown &d) {
    *out++ = d.digits[0];
    if (d.count > 1) {
        *out++ = '.';
        std::memcpy(out, d.digits + 1, static_cast<size_t>(d.count - 1));
        out += d.count - 1;
    }
    return out + std::sprintf(out, "E%d", d.exponent);
}

sword copy_text(const char *text, char *buf, size_t size) {
    const size_t length = std::strlen(text);
    if (length >= size) return OCI_ERROR;
    std::memcpy(buf, text, length + 1);
    return OCI_SUCCESS;
}

}  // namespace

extern "C" sword QZCICalcNumToStr(const QZCICalcNumber *in, char *buf, size_t size) {
    if (size == 0) return OCI_ERROR;
    *buf = '\0';
    const bool negative = calc::is_negative(*in);
    if (in->is_zero != 0) return copy_text("0", buf, size);
    if (calc::is_infinite(*in)) return copy_text(negative ? "-~" : "~", buf, size);

    Shown d;
    if (!read_digits(*in, d)) return OCI_ERROR;
    // Longer than any text of a record.
    constexpr size_t longest = 2 * max_digits;
    const int room = static_cast<int>(size < longest ? size : longest) - 1 - negative;
    // A rounding that carries to a further digit changes the form; it leaves one digit.
    for (;;) {
        const int plain =
            d.exponent >= plain_low && d.exponent <= plain_high ? fitting_plain(d, room) : 0;
        const int fits = plain > 0 ? plain : fitting_scientific(d, room);
        if (fits <= 0) return OCI_ERROR;
        if (fits < d.count) {
            round_digits(d, fits);
            continue;
        }
        char *out = buf;
        if (negative) *out++ = '-';
        *(plain > 0 ? write_plain(out, d) : write_scientific(out, d)) = '\0';
        return OCI_SUCCESS;
    }
}
