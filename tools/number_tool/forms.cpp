#include "forms.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstring>

#include "decimal.h"
#include "digit_words.h"
#include "messages.h"
#include "number_bytes.h"
#include "oci_utils/oci_utils.h"

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
            return refuse(reason, "unexpected " + in_quotes(value.substr(at, 1)) + at_column(at));
        }
        if (at + 1 == value.size() || nibble(at + 1) == no_nibble) {
            return refuse(reason, "second hex digit of a byte expected" + at_column(at + 1));
        }
        if (!add_byte(given, nibble(at) * 16u + nibble(at + 1), reason)) return false;
    }
    return given.count > 0 || refuse(reason, "no bytes");
}

// A decimal number of a byte list at `at`, which moves behind it.
bool read_list_number(std::string_view value, size_t &at, unsigned &n, std::string &reason) {
    const char *const from = value.data() + at;
    const auto [end, error] = std::from_chars(from, value.data() + value.size(), n);
    if (end == from) return refuse(reason, "number expected" + at_column(at));
    if (error != std::errc{} || n > 255) return refuse(reason, "number above 255" + at_column(at));
    at += static_cast<size_t>(end - from);
    return true;
}

bool read_list(std::string_view value, GivenBytes &given, std::string &reason) {
    given.count = 0;
    size_t at = find_list(value);
    if (at == value.npos)
        return refuse(reason, "\"Len=\" expected" + at_column(skip_blanks(value, 0)));
    at += list_start.size();
    unsigned length, n;
    if (!read_list_number(value, at, length, reason)) return false;
    if (!add_byte(given, length, reason)) return false;
    if (at == value.size() || value[at] != ':')
        return refuse(reason, "\":\" expected" + at_column(at));
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
        if (value[at] != ',') return refuse(reason, "\",\" expected" + at_column(at));
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

// The bytes behind the length byte, as sortable text has them; without the ending byte if digits
// are wanted alone.
bool read_tail(Form form, std::string_view value, GivenBytes &given, std::string &reason) {
    GivenBytes tail{};
    if (!read_hex(value, tail, reason)) return false;
    given.count = 0;
    add_byte(given, tail.count, reason);
    for (unsigned i = 0; i < tail.count; ++i) {
        if (!add_byte(given, tail.number.OCINumberPart[i], reason)) return false;
    }
    const OCINumber &number = given.number;
    if (form == Form::digits && tail.count > 1 && tail.count <= max_digits && is_negative(number)) {
        given.number.OCINumberPart[0] = static_cast<ub1>(tail.count + 1);
        add_byte(given, ending_byte, reason);
    }
    return true;
}

constexpr std::string_view base64_digits =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

bool read_base64(std::string_view value, GivenBytes &given, std::string &reason) {
    given.count = 0;
    unsigned bits = 0, bit_count = 0;
    size_t at = 0;
    for (; at < value.size() && value[at] != '='; ++at) {
        const size_t digit = base64_digits.find(value[at]);
        if (digit == value.npos) {
            return refuse(reason, "unexpected " + in_quotes(value.substr(at, 1)) + at_column(at));
        }
        bits = bits << 6 | static_cast<unsigned>(digit);
        bit_count += 6;
        if (bit_count < 8) continue;
        bit_count -= 8;
        if (!add_byte(given, bits >> bit_count & 255, reason)) return false;
    }
    const size_t padding = value.size() - at;
    const bool is_padded = value.substr(at) == std::string_view("==").substr(0, padding);
    if (value.size() % 4 != 0 || padding > 2 || !is_padded) {
        return refuse(reason, "not whole groups of four characters");
    }
    if ((bits & ((1u << bit_count) - 1)) != 0) {
        return refuse(reason, "bits left over behind the last byte");
    }
    return given.count > 0 || refuse(reason, "no bytes");
}

bool read_text(bool is_strict, std::string_view value, GivenBytes &given, std::string &reason) {
    if (!read_decimal(value, is_strict, given.number, reason)) return false;
    given.count = given.number.OCINumberPart[0] + 1u;
    return true;
}

// Whether all but the digits is as in a finite number. Signs are as good as random: they take no
// branch.
bool has_plain_frame(const OCINumber &number, unsigned count, unsigned &digits) {
    const ub1 *const bytes = number.OCINumberPart;
    const unsigned length = bytes[0];
    digits = 0;
    if (!has_valid_length(number) || (count != length + 1 && count != OCI_NUMBER_SIZE))
        return false;
    if (length == 1) return bytes[1] == zero_exponent_byte;
    const bool negative = is_negative(bytes[1]), ends = bytes[length] == ending_byte;
    digits = length - 1 - ends;
    // Zero's exponent byte, 128, and its mirror image are those of no digits.
    const bool has_exponent = static_cast<ub1>(bytes[1] - (zero_exponent_byte - 1)) > 1;
    // The longest negative value holds 20 digits, or 19 and the ending byte.
    const bool has_ending = (ends == negative) | (negative & (length == max_length));
    return (digits > 0) & has_exponent & has_ending;
}

// Malformed bytes are rare, and told apart by find_faults.
bool is_plain_number(const OCINumber &number, unsigned count) {
    unsigned digits = 0;
    digit_words::Digits read;
    return has_plain_frame(number, count, digits) &&
           read_digits(number, is_negative(number), digits, read);
}

char *put(char *out, std::string_view text) {
    std::memcpy(out, text.data(), text.size());
    return out + text.size();
}

char *write_hex(const ub1 *bytes, unsigned count, char *out) {
    for (unsigned i = 0; i < count; ++i) {
        *out++ = "0123456789ABCDEF"[bytes[i] >> 4];
        *out++ = "0123456789ABCDEF"[bytes[i] & 15];
    }
    return out;
}

char *write_hex(const OCINumber &number, char *out) {
    return write_hex(number.OCINumberPart, number.OCINumberPart[0] + 1u, out);
}

char *write_base64(const OCINumber &number, char *out) {
    const unsigned count = number.OCINumberPart[0] + 1u;
    for (unsigned i = 0; i < count; i += 3) {
        unsigned bits = 0;
        for (unsigned k = i; k < i + 3; ++k) {
            bits = bits << 8 | (k < count ? number.OCINumberPart[k] : 0u);
        }
        for (unsigned k = 0; k < 4; ++k) {
            *out++ = i + k <= count ? base64_digits[bits >> (18 - 6 * k) & 63] : '=';
        }
    }
    return out;
}

constexpr ub2 max_text = 2 + 128 + 40;

char *write_text(const OCINumber &number, char *out, std::string &reason) {
    ub2 size = max_text;
    if (getStrFromNumber(&number, reinterpret_cast<OraText *>(out), &size) == OCI_SUCCESS) {
        return out + size;
    }
    if (is_positive_infinity(number)) return put(out, "~");
    if (is_negative_infinity(number)) return put(out, "-~");
    refuse(reason, "no decimal text");
    return nullptr;
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

bool read_bytes(const Reading &reading, std::string_view value, GivenBytes &given,
                std::string &reason) {
    switch (reading.form) {
        case Form::text: return read_text(reading.is_strict, value, given, reason);
        case Form::hex: return read_hex(value, given, reason);
        case Form::list: return read_list(value, given, reason);
        case Form::raw: return read_record(value, given, reason);
        case Form::base64: return read_base64(value, given, reason);
        case Form::digits:
        case Form::sortable: return read_tail(reading.form, value, given, reason);
        case Form::json: break;  // never read
    }
    return false;
}

const OCINumber *read_number(const Reading &reading, std::string_view value, OCINumber &room,
                             std::string &reason) {
    if (reading.form == Form::text) {
        return read_decimal(value, reading.is_strict, room, reason) ? &room : nullptr;
    }
    if (reading.form == Form::raw && value.size() == OCI_NUMBER_SIZE) {
        const auto *const record = reinterpret_cast<const OCINumber *>(value.data());
        if (is_plain_number(*record, OCI_NUMBER_SIZE)) return record;
    }
    GivenBytes given{};
    if (!read_bytes(reading, value, given, reason)) return nullptr;
    room = given.number;
    if (is_plain_number(given.number, given.count)) return &room;
    const Faults faults = find_faults(given);
    const Fault *const fault = faults.malformed();
    if (fault == nullptr) return &room;
    reason = describe(*fault, given);
    return nullptr;
}

char *write_record_text(std::string_view record, char *out) {
    const auto *const number = reinterpret_cast<const OCINumber *>(record.data());
    unsigned digits = 0;
    ub2 size = max_text;
    if (record.size() != OCI_NUMBER_SIZE || !has_plain_frame(*number, OCI_NUMBER_SIZE, digits) ||
        getStrFromNumber(number, reinterpret_cast<OraText *>(out), &size) != OCI_SUCCESS) {
        return nullptr;
    }
    return out + size;
}

char *write_number(Form form, const OCINumber &number, char *out, std::string &reason) {
    switch (form) {
        case Form::text: return write_text(number, out, reason);
        case Form::hex: return write_hex(number, out);
        case Form::list: return write_list(number, out);
        case Form::raw: {
            // Bytes behind the value say nothing and are written as zeros.
            const unsigned length = number.OCINumberPart[0];
            for (unsigned i = 0; i < OCI_NUMBER_SIZE; ++i) {
                out[i] = static_cast<char>(i <= length ? number.OCINumberPart[i] : 0);
            }
            return out + OCI_NUMBER_SIZE;
        }
        case Form::base64: return write_base64(number, out);
        case Form::digits: {
            const bool is_finite = !is_zero(number) && !is_negative_infinity(number);
            const unsigned count = is_finite ? digit_count(number) + 1 : 1;
            return write_hex(number.OCINumberPart + 1, count, out);
        }
        case Form::sortable: {
            // Of equal values the bytes are equal in normal form only.
            OCINumber normal = number;
            normalize(normal);
            return write_hex(normal.OCINumberPart + 1, normal.OCINumberPart[0], out);
        }
        case Form::json:
            out = write_text(number, put(out, "{\"value\":\""), reason);
            if (out == nullptr) return nullptr;
            out = write_hex(number, put(out, "\",\"bytes\":\""));
            return put(out, "\"}");
    }
    return nullptr;
}

}  // namespace number_tool
