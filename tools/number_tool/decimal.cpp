#include "decimal.h"

#include <algorithm>

#include "messages.h"
#include "number_bytes.h"
#include "oci_utils/oci_utils.h"

namespace number_tool {

using namespace number_bytes;

namespace {

constexpr const char *too_large = "magnitude is 1E126 or more";

bool is_digit(char c) { return c >= '0' && c <= '9'; }
bool is_blank(char c) { return c == ' ' || c == '\t'; }

std::string unexpected(std::string_view text, size_t at) {
    return "unexpected " + in_quotes(text.substr(at, 1));
}

bool read_plain(std::string_view text, OCINumber &number) {
    // The codec only reads the text, and it is no longer than a line.
    auto *const bytes = reinterpret_cast<ub1 *>(const_cast<char *>(text.data()));
    return getNumberFromStr(&number, bytes, static_cast<ub4>(text.size())) == OCI_SUCCESS;
}

// The parts of a magnitude, as far as they are there.
struct Magnitude {
    std::string_view digits;  // with at most one period
    long exponent = 0;
};

// What is wrong with all of a text rather than one place in it.
constexpr size_t nowhere = std::string_view::npos;

// Reads the parts from `at` on, and moves `at` behind them or to what is wrong.
bool split_magnitude(std::string_view text, size_t &at, Magnitude &parts, std::string &reason) {
    const size_t start = at;
    bool has_digit = false, has_period = false;
    for (; at < text.size(); ++at) {
        if (text[at] == '.') {
            if (has_period) {
                reason = "second period";
                return false;
            }
            has_period = true;
        } else if (is_digit(text[at])) {
            has_digit = true;
        } else {
            break;
        }
    }
    parts.digits = text.substr(start, at - start);
    if (!has_digit) {
        reason = at == text.size() ? "no digit" : unexpected(text, at);
        if (at == text.size()) at = nowhere;
        return false;
    }
    if (at == text.size() || (text[at] | 0x20) != 'e') return true;
    ++at;
    const bool is_negative = at < text.size() && text[at] == '-';
    if (at < text.size() && (text[at] == '-' || text[at] == '+')) ++at;
    if (at == text.size() || !is_digit(text[at])) {
        reason = "digits of an exponent are missing";
        return false;
    }
    // Beyond all digits of a line; what is larger makes no difference.
    constexpr long ceiling = 1'000'000'000;
    for (; at < text.size() && is_digit(text[at]); ++at) {
        parts.exponent = std::min(parts.exponent * 10 + (text[at] - '0'), ceiling);
    }
    if (is_negative) parts.exponent = -parts.exponent;
    return true;
}

// Of parts whose exponent is not 0. The exponent moves the period before the one rounding.
// Returns false for a magnitude of 1E126 or more.
bool scale(bool is_negative, const Magnitude &parts, OCINumber &number) {
    // Only the 41st digit decides how 40 are rounded.
    constexpr size_t max_kept = 64;
    constexpr long max_places = 126, min_places = -130;
    char kept[max_kept];
    size_t count = 0;
    long places = 0;  // from the first digit that is not zero to the period
    bool behind_period = false;
    for (const char c : parts.digits) {
        if (c == '.') {
            behind_period = true;
        } else if (count == 0 && c == '0') {
            places -= behind_period;
        } else {
            places += !behind_period;
            if (count < max_kept) kept[count++] = c;
        }
    }
    places += parts.exponent;
    if (count == 0 || places < min_places) {
        set_zero(number);
        return true;
    }
    if (places > max_places) return false;
    std::string plain = is_negative ? "-" : "";
    const auto integers = static_cast<size_t>(std::max(places, 0L));
    plain.append(kept, std::min(count, integers));
    if (integers > count) plain.append(integers - count, '0');
    plain += '.';
    if (places < 0) plain.append(static_cast<size_t>(-places), '0');
    if (count > integers) plain.append(kept + integers, count - integers);
    return read_plain(plain, number);
}

// Strict text apart, what the codec takes without more ado is tried first; so a failure here is
// one of exponents, signs, blanks or text that is wrong.
bool read_loose(std::string_view text, OCINumber &number, std::string &reason, size_t &at) {
    while (!text.empty() && is_blank(text.back())) text.remove_suffix(1);
    while (at < text.size() && is_blank(text[at])) ++at;
    const bool is_negative = at < text.size() && text[at] == '-';
    if (at < text.size() && (text[at] == '-' || text[at] == '+')) ++at;
    if (text.substr(at) == "~") {
        set_infinity(number, is_negative);
        return true;
    }
    Magnitude parts;
    if (!split_magnitude(text, at, parts, reason)) return false;
    if (at != text.size()) {
        reason = unexpected(text, at);
        return false;
    }
    if (scale(is_negative, parts, number)) return true;
    reason = too_large;
    at = nowhere;
    return false;
}

// What is wrong with text that the codec does not take, but for the infinities.
bool read_strict(std::string_view text, OCINumber &number, std::string &reason, size_t &at) {
    while (at < text.size() && text[at] == ' ') ++at;
    const bool is_negative = at < text.size() && text[at] == '-';
    if (is_negative) ++at;
    if (text.substr(at) == "~") {
        set_infinity(number, is_negative);
        return true;
    }
    const size_t end = std::min(text.find_first_of("eE"), text.size());
    Magnitude parts;
    if (split_magnitude(text.substr(0, end), at, parts, reason) && at == text.size()) {
        reason = too_large;
        at = nowhere;
    } else if (reason != "second period" && std::min(at, end) < text.size()) {
        at = std::min(at, end);
        reason = unexpected(text, at);
    }
    return false;
}

}  // namespace

std::string at_column(size_t index) { return " at column " + std::to_string(index + 1); }

bool read_decimal(std::string_view text, bool is_strict, OCINumber &number, std::string &reason) {
    if (read_plain(text, number)) return true;
    if (text.empty()) {
        reason = "no value";
        return false;
    }
    size_t at = 0;
    if ((is_strict ? read_strict : read_loose)(text, number, reason, at)) return true;
    if (at != nowhere) reason += at_column(at);
    return false;
}

bool read_magnitude(std::string_view text, size_t &length, OCINumber &number, std::string &reason,
                    size_t &wrong_at) {
    Magnitude parts;
    length = 0;
    if (!split_magnitude(text, length, parts, reason)) {
        wrong_at = length == nowhere ? 0 : length;
        return false;
    }
    if (!scale(false, parts, number)) set_infinity(number, false);
    return true;
}

void normalize(OCINumber &number) {
    if (is_zero(number) || is_negative_infinity(number) || is_positive_infinity(number)) return;
    DigitView digits = digits_of(number);
    unsigned zeros = 0;
    while (zeros < digits.count && digits.get(zeros) == 0) ++zeros;
    if (zeros > 0) {
        for (unsigned i = zeros; i < digits.count; ++i) digits.set(i - zeros, digits.get(i));
        digits.count -= zeros;
        digits.exponent -= static_cast<int>(zeros);
    }
    trim(digits);
    finish(digits);
}

}  // namespace number_tool
