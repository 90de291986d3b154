#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <optional>

#include "commands.h"
#include "messages.h"
#include "number_bytes.h"
#include "options.h"

namespace number_tool {

using namespace number_bytes;

namespace {

void append(std::string &text, const char *format, ...) __attribute__((format(printf, 2, 3)));
void append(std::string &text, const char *format, ...) {
    char line[256];
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(line, sizeof line, format, arguments);
    va_end(arguments);
    text += line;
}

// Decimal text wins over hex: 0180 is 180, and 01 80 are bytes. But an exponent's e may be a
// digit of whole bytes: 02E102.
Form detect(std::string_view value) {
    if (find_list(value) != value.npos) return Form::list;
    GivenBytes given;
    std::string reason;
    if (read_bytes({Form::text, true}, value, given, reason)) return Form::text;
    const bool is_hex = value.find_first_not_of(' ') != value.npos &&
                        value.find_first_not_of("0123456789ABCDEFabcdef ") == value.npos;
    if (!is_hex) return Form::text;
    const bool is_text = read_bytes({Form::text, false}, value, given, reason);
    return is_text && value.size() % 2 != 0 ? Form::text : Form::hex;
}

// The parts of a value in colours, where a terminal shows them.
struct Palette {
    const char *length = "", *exponent = "", *digit = "", *ending = "", *fault = "", *plain = "";

    const char *of(const OCINumber &number, unsigned byte) const {
        if (byte == 0) return length;
        if (byte == 1) return exponent;
        return number.OCINumberPart[byte] == ending_byte ? ending : digit;
    }
};

constexpr Palette colours = {"\x1b[35m", "\x1b[36m",   "\x1b[32m",
                             "\x1b[33m", "\x1b[1;31m", "\x1b[0m"};

// What the byte says, when nothing is wrong with it.
std::string meaning(const OCINumber &number, unsigned byte) {
    std::string text;
    const unsigned length = number.OCINumberPart[0];
    const ub1 value = number.OCINumberPart[byte];
    if (byte == 0) {
        append(text, "length: %u more %s", length, length == 1 ? "byte" : "bytes");
    } else if (!has_valid_length(number)) {
        text = "not known without a length";
    } else if (byte > length) {
        text = "not part of the value";
    } else if (is_zero(number)) {
        text = "zero";
    } else if (is_negative_infinity(number)) {
        text = "negative infinity";
    } else if (is_positive_infinity(number)) {
        text = "positive infinity";
    } else if (byte == 1) {
        append(text, "%s, exponent %d: the first digit counts 100^%d",
               is_negative(number) ? "negative" : "positive", real_exponent(value),
               real_exponent(value));
    } else if (value == ending_byte) {
        text = "ending byte";
    } else {
        const ub1 digit = decode_digit(is_negative(number), value);
        if (digit > 99) {
            text = "no digit";
        } else {
            append(text, "digit %02u x 100^%d", digit,
                   real_exponent(number.OCINumberPart[1]) + 2 - static_cast<int>(byte));
        }
    }
    return text;
}

// One row for each byte, each with its faults, and the value.
std::string explain(std::string_view value, const GivenBytes &given, const Faults &faults,
                    const Palette &palette) {
    std::string text = in_quotes(value) + '\n';
    const ub1 *const bytes = given.number.OCINumberPart;
    const bool has_length = has_valid_length(given.number);
    for (unsigned byte = 0; byte <= given.count; ++byte) {
        std::string wrong;
        for (const Fault &fault : faults) {
            if (fault.byte != byte) continue;
            wrong +=
                std::string("  ") + palette.fault + "<- " + describe(fault, given) + palette.plain;
        }
        if (byte == given.count) {
            if (!wrong.empty())
                append(text, "  byte %2u  --    -  missing%s\n", byte, wrong.c_str());
            break;
        }
        if (given.count == OCI_NUMBER_SIZE && has_length && byte > bytes[0]) {
            // The unused bytes of a record.
            append(text, "  bytes %u to %u are not part of the value%s\n", byte, given.count - 1,
                   wrong.c_str());
            break;
        }
        append(text, "  byte %2u  %s%02X%s  %3u  ", byte, palette.of(given.number, byte),
               bytes[byte], palette.plain, bytes[byte]);
        text += meaning(given.number, byte) + wrong + '\n';
    }
    // What the library makes of the bytes, faults or not; it must have them all.
    char decimal[max_result];
    std::string reason;
    const bool is_complete = given.count > bytes[0];
    const char *const end =
        is_complete ? write_number(Form::text, given.number, decimal, reason) : nullptr;
    text += "  value    ";
    text += end == nullptr ? "none" : std::string(decimal, static_cast<size_t>(end - decimal));
    return text;
}

}  // namespace

Command add_inspect(CLI::App &tool) {
    struct Options {
        StreamOptions stream;
        Reading from;
        std::optional<Form> form;  // of all values; else each has its own
        Palette palette;
        std::atomic<bool> is_well_formed = true;
    };
    const auto options = std::make_shared<Options>();
    options->stream.results = ResultPlace::alone;
    CLI::App *const app = tool.add_subcommand("inspect", "Number bytes explained, a row a byte");
    const CLI::Option *const from_option =
        add_form(*app, "--from", options->from.form, forms_read,
                 "Form of the values; without it each is recognised by its looks");
    add_strict(*app, options->from.is_strict);
    add_stream_options(*app, options->stream);
    const auto make_operation = [options]() -> Operation {
        return [options](const Value &value, char *out, std::string &reason) -> char * {
            const bool is_strict = options->from.is_strict;
            const Form form = options->form ? *options->form : detect(value.text);
            GivenBytes given;
            if (!read_bytes({form, is_strict}, value.text, given, reason)) return nullptr;
            const Faults faults = find_faults(given);
            if (faults.malformed() != nullptr) options->is_well_formed = false;
            const std::string text = explain(form == Form::raw ? hex_text(value.text) : value.text,
                                             given, faults, options->palette);
            return out + text.copy(out, text.size());
        };
    };
    return {app, "[VALUE]...",
            "VALUE is decimal text, hex or a byte list. Digits alone are decimal text: write the "
            "bytes 01 80 with a blank between them, or force the form with --from. Rows of "
            "malformed bytes say what is wrong, and the exit status is then 1. A terminal shows "
            "the parts in colours, unless NO_COLOR is set.",
            "ocinumber inspect -123.45\n"
            "ocinumber inspect 03C20218 'Len=3: 194,2,24'\n"
            "ocinumber inspect --from hex 0180",
            [options, make_operation, from_option](Output &out) {
                if (from_option->count() > 0) options->form = options->from.form;
                settle(options->stream, options->from.form, Form::text);
                const char *const no_colour = std::getenv("NO_COLOR");
                const bool is_plain = no_colour != nullptr && *no_colour != '\0';
                if (out.is_terminal() && !is_plain) options->palette = colours;
                const Summary summary = for_each_value(options->stream, make_operation, out);
                return options->is_well_formed ? summary.status() : 1;
            }};
}

}  // namespace number_tool
