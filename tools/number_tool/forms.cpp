#include "forms.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstring>

#include "decimal.h"
#include "number_bytes.h"
#include "oci_utils/oci_utils.h"
#include "stream.h"

namespace number_tool {

using namespace number_bytes;

namespace {

constexpr ub1 no_nibble = 0xFF;
constexpr std::array<ub1, 256> nibbles = [] {
    std::array<ub1, 256> table{};
    table.fill(no_nibble);
    for (unsigned i = 0; i < 10; ++i) table['0' + i] = static_cast<ub1>(i);
    for (unsigned i = 0; i < 6; ++i) {
        table['A' + i] = table['a' + i] = static_cast<ub1>(10 + i);
    }
    return table;
}();

bool refuse(std::string &reason, std::string text) {
    reason = std::move(text);
    return false;
}

std::string column(size_t index) { return " at column " + std::to_string(index + 1); }

size_t skip_blanks(std::string_view text, size_t at) {
    while (at < text.size() && text[at] == ' ') ++at;
    return at;
}

constexpr std::string_view list_start = "Len=";

bool add_byte(GivenBytes &given, unsigned byte, std::string &reason) {
    if (given.count == OCI_NUMBER_SIZE) return refuse(reason, "more than 22 bytes");
    given.number.OCINumberPart[given.count++] = static_cast<ub1>(byte);
    return true;
}

// The usual form, hex digits alone; false for any other.
bool read_plain_hex(std::string_view value, GivenBytes &given) {
    if (value.empty() || value.size() % 2 != 0 || value.size() > 2 * OCI_NUMBER_SIZE) return false;
    given.count = 0;
    for (size_t at = 0; at < value.size(); at += 2) {
        const ub1 high = nibbles[static_cast<ub1>(value[at])];
        const ub1 low = nibbles[static_cast<ub1>(value[at + 1])];
        if ((high | low) > 15) return false;
        given.number.OCINumberPart[given.count++] = static_cast<ub1>(high << 4 | low);
    }
    return true;
}

bool read_hex(std::string_view value, GivenBytes &given, std::string &reason) {
    if (read_plain_hex(value, given)) return true;
    given.count = 0;
    const auto nibble = [&](size_t at) { return nibbles[static_cast<ub1>(value[at])]; };
    for (size_t at = skip_blanks(value, 0); at < value.size(); at = skip_blanks(value, at + 2)) {
        if (nibble(at) == no_nibble) {
            return refuse(reason, "unexpected " + in_quotes(value.substr(at, 1)) + column(at));
        }
        if (at + 1 == value.size() || nibble(at + 1) == no_nibble) {
            return refuse(reason, "second hex digit of a byte expected" + column(at + 1));
        }
        if (!add_byte(given, nibble(at) * 16u + nibble(at + 1), reason)) return false;
    }
    return given.count > 0 || refuse(reason, "no bytes");
}

// The length byte is the count of the others.
bool read_sortable(std::string_view value, GivenBytes &given, std::string &reason) {
    GivenBytes counted;
    if (!read_hex(value, counted, reason)) return false;
    if (counted.count > max_length) return refuse(reason, "more than 21 bytes");
    given.count = counted.count + 1;
    given.number.OCINumberPart[0] = static_cast<ub1>(counted.count);
    std::memcpy(given.number.OCINumberPart + 1, counted.number.OCINumberPart, counted.count);
    return true;
}

// A decimal number of a byte list at `at`, which moves behind it.
bool read_list_number(std::string_view value, size_t &at, unsigned &n, std::string &reason) {
    const char *const from = value.data() + at;
    const auto [end, error] = std::from_chars(from, value.data() + value.size(), n);
    if (end == from) return refuse(reason, "number expected" + column(at));
    if (error != std::errc{} || n > 255) return refuse(reason, "number above 255" + column(at));
    at += static_cast<size_t>(end - from);
    return true;
}

bool read_list(std::string_view value, GivenBytes &given, std::string &reason) {
    given.count = 0;
    size_t at = find_list(value);
    if (at == value.npos)
        return refuse(reason, "\"Len=\" expected" + column(skip_blanks(value, 0)));
    at += list_start.size();
    unsigned length, n;
    if (!read_list_number(value, at, length, reason)) return false;
    if (!add_byte(given, length, reason)) return false;
    if (at == value.size() || value[at] != ':')
        return refuse(reason, "\":\" expected" + column(at));
    at = skip_blanks(value, at + 1);
    if (at == value.size()) return true;
    // One number more than the length, the length itself in front: print_number's own line.
    const auto commas = std::count(value.begin() + static_cast<ptrdiff_t>(at), value.end(), ',');
    const size_t first = at;
    for (;;) {
        const size_t from = at;
        if (!read_list_number(value, at, n, reason)) return false;
        const bool repeats_length = from == first && n == length && commas == length;
        if (!repeats_length && !add_byte(given, n, reason)) return false;
        at = skip_blanks(value, at);
        if (at == value.size()) return true;
        if (value[at] != ',') return refuse(reason, "\",\" expected" + column(at));
        at = skip_blanks(value, at + 1);
    }
}

bool read_record(std::string_view value, GivenBytes &given, std::string &reason) {
    if (value.size() != OCI_NUMBER_SIZE) {
        return refuse(reason, "record ends after " + std::to_string(value.size()) + " of 22 bytes");
    }
    std::memcpy(given.number.OCINumberPart, value.data(), OCI_NUMBER_SIZE);
    given.count = OCI_NUMBER_SIZE;
    return true;
}

bool read_text(std::string_view value, bool strict, GivenBytes &given, std::string &reason) {
    // The usual text is the codec's, which only reads it; it is no longer than a line.
    auto *const text = reinterpret_cast<ub1 *>(const_cast<char *>(value.data()));
    if (getNumberFromStr(&given.number, text, static_cast<ub4>(value.size())) != OCI_SUCCESS) {
        const std::string_view blanks = strict ? " " : " \t";
        const size_t first = std::min(value.find_first_not_of(blanks), value.size());
        const size_t last = strict ? value.size() : value.find_last_not_of(blanks) + 1;
        const std::string_view name = value.substr(first, last - first);
        if (name == "~" || name == "-~") {
            set_infinity(given.number, name == "-~");
        } else {
            DecimalText parts;
            if (!scan_decimal(value, strict, 1, parts, reason)) return false;
            if (!number_of(parts, given.number)) {
                return refuse(reason, "magnitude is 1E126 or more");
            }
        }
    }
    given.count = given.number.OCINumberPart[0] + 1u;
    return true;
}

char *put(char *out, std::string_view text) {
    std::memcpy(out, text.data(), text.size());
    return out + text.size();
}

char *write_hex(const OCINumber &number, char *out, unsigned first = 0) {
    for (unsigned i = first; i <= number.OCINumberPart[0]; ++i) {
        *out++ = "0123456789ABCDEF"[number.OCINumberPart[i] >> 4];
        *out++ = "0123456789ABCDEF"[number.OCINumberPart[i] & 15];
    }
    return out;
}

char *write_list(const OCINumber &number, char *out) {
    const unsigned length = number.OCINumberPart[0];
    out = put(out, "Len=");
    out = std::to_chars(out, out + 3, length).ptr;
    out = put(out, ": ");
    for (unsigned i = 1; i <= length; ++i) {
        if (i > 1) *out++ = ',';
        out = std::to_chars(out, out + 3, unsigned{number.OCINumberPart[i]}).ptr;
    }
    return out;
}

}  // namespace

size_t find_list(std::string_view value) {
    size_t at = value.find(list_start);
    while (at != value.npos && at > 0 && value[at - 1] != ' ') at = value.find(list_start, at + 1);
    return at;
}

const std::map<std::string, Form> &form_names() {
    static const std::map<std::string, Form> names = {{"text", Form::text},
                                                      {"hex", Form::hex},
                                                      {"list", Form::list},
                                                      // The name of old.
                                                      {"dump", Form::list},
                                                      {"raw", Form::raw},
                                                      {"sortable", Form::sortable}};
    return names;
}

bool read_bytes(Form form, std::string_view value, GivenBytes &given, std::string &reason) {
    switch (form) {
        case Form::text: return read_text(value, false, given, reason);
        case Form::strict_text: return read_text(value, true, given, reason);
        case Form::hex: return read_hex(value, given, reason);
        case Form::list: return read_list(value, given, reason);
        case Form::raw: return read_record(value, given, reason);
        case Form::sortable: return read_sortable(value, given, reason);
    }
    return false;
}

bool read_number(Form form, std::string_view value, GivenBytes &given, std::string &reason) {
    if (!read_bytes(form, value, given, reason)) return false;
    const Faults faults = find_faults(given);
    if (const Fault *fault = faults.malformed()) return refuse(reason, describe(*fault, given));
    return true;
}

char *write_number(Form form, const OCINumber &number, char *out, std::string &reason) {
    switch (form) {
        case Form::text:
        case Form::strict_text: {
            ub2 size = 256;  // the longest text has 2 + 128 + 40 characters
            if (is_positive_infinity(number)) {
                out = put(out, "~");
            } else if (is_negative_infinity(number)) {
                out = put(out, "-~");
            } else if (getStrFromNumber(&number, reinterpret_cast<OraText *>(out), &size) ==
                       OCI_SUCCESS) {
                out += size;
            } else {
                refuse(reason, "no decimal text");
                return nullptr;
            }
            break;
        }
        case Form::hex: out = write_hex(number, out); break;
        case Form::list: out = write_list(number, out); break;
        case Form::sortable: {
            // Only in normal form is the order of the bytes that of the values; an infinity has no
            // text, and no other form.
            OCINumber normal = number;
            OraText text[256];
            ub2 size = sizeof text;
            if (getStrFromNumber(&number, text, &size) == OCI_SUCCESS) {
                getNumberFromStr(&normal, text, size);
            }
            out = write_hex(normal, out, 1);
            break;
        }
        case Form::raw: {
            // Bytes behind the value say nothing and are written as zeros.
            const size_t length = number.OCINumberPart[0] + size_t{1};
            std::memcpy(out, number.OCINumberPart, length);
            std::memset(out + length, 0, OCI_NUMBER_SIZE - length);
            return out + OCI_NUMBER_SIZE;
        }
    }
    *out++ = '\n';
    return out;
}

}  // namespace number_tool
