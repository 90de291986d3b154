#include "decimal.h"

#include <algorithm>

#include "oci_utils/oci_utils.h"
#include "stream.h"

namespace number_tool {

namespace {

bool is_digit(char c) { return c >= '0' && c <= '9'; }

std::string_view take_digits(std::string_view text, size_t &at) {
    const size_t begin = at;
    while (at < text.size() && is_digit(text[at])) ++at;
    return text.substr(begin, at - begin);
}

// Any number of digits; more than a line's length makes no difference.
long exponent_of(std::string_view digits, bool negative) {
    constexpr long most = 4 * static_cast<long>(max_line);
    long value = 0;
    for (const char c : digits) value = std::min(10 * value + (c - '0'), most);
    return negative ? -value : value;
}

}  // namespace

bool scan_decimal(std::string_view text, bool strict, size_t column, DecimalText &parts,
                  std::string &reason) {
    const auto refuse = [&](const std::string &what) {
        reason = what;
        return false;
    };
    const auto refuse_at = [&](const std::string &what, size_t at) {
        return refuse(what + " at column " + std::to_string(column + at));
    };
    if (text.empty()) return refuse("no value");
    const auto is_blank = [&](char c) { return c == ' ' || (c == '\t' && !strict); };
    size_t at = 0;
    while (at < text.size() && is_blank(text[at])) ++at;
    if (at < text.size() && (text[at] == '-' || (text[at] == '+' && !strict))) {
        parts.negative = text[at++] == '-';
    }
    parts.integer = take_digits(text, at);
    if (at < text.size() && text[at] == '.') parts.fraction = take_digits(text, ++at);
    const bool has_digit = !parts.integer.empty() || !parts.fraction.empty();
    if (has_digit && !strict && at < text.size() && (text[at] | 0x20) == 'e') {
        const bool has_sign = ++at < text.size() && (text[at] == '-' || text[at] == '+');
        const bool negative = has_sign && text[at] == '-';
        at += has_sign;
        const std::string_view digits = take_digits(text, at);
        if (digits.empty()) return refuse_at("digits of an exponent are missing", at);
        parts.exponent = exponent_of(digits, negative);
    }
    size_t end = text.size();
    while (!strict && end > at && is_blank(text[end - 1])) --end;
    if (at < end) {
        return refuse_at(
            text[at] == '.' ? "second period" : "unexpected " + in_quotes(text.substr(at, 1)), at);
    }
    return has_digit || refuse("no digit");
}

bool number_of(const DecimalText &parts, OCINumber &number) {
    // 0.ddd times a power of ten, the first digit not zero.
    std::string digits{parts.integer};
    digits += parts.fraction;
    const size_t zeros = std::min(digits.find_first_not_of('0'), digits.size());
    digits.erase(0, zeros);
    const long power =
        static_cast<long>(parts.integer.size()) - static_cast<long>(zeros) + parts.exponent;
    constexpr long highest = 126, lowest = -128;
    if (!digits.empty() && power > highest) return false;
    std::string text = parts.negative ? "-" : "";
    if (digits.empty() || power < lowest) {
        text += '0';
    } else if (power <= 0) {
        text += '.';
        text.append(static_cast<size_t>(-power), '0');
        text += digits;
    } else {
        const auto places = static_cast<size_t>(power);
        if (digits.size() < places) digits.resize(places, '0');
        text.append(digits, 0, places);
        text += '.';
        text.append(digits, places);
    }
    return getNumberFromStr(&number, reinterpret_cast<ub1 *>(text.data()),
                            static_cast<ub4>(text.size())) == OCI_SUCCESS;
}

}  // namespace number_tool
