#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <optional>

#include "commands.h"
#include "number_bytes.h"

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

// Decimal text wins over hex: 0180 is 180, and 01 80 are bytes.
Form detect(std::string_view value) {
    if (find_list(value) != value.npos) return Form::list;
    GivenBytes given;
    std::string reason;
    if (read_bytes(Form::text, value, given, reason)) return Form::text;
    const bool is_hex = value.find_first_not_of(' ') != value.npos &&
                        value.find_first_not_of("0123456789ABCDEFabcdef ") == value.npos;
    return is_hex ? Form::hex : Form::text;
}

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
std::string explain(std::string_view value, const GivenBytes &given, const Faults &faults) {
    std::string text = in_quotes(value) + '\n';
    const ub1 *const bytes = given.number.OCINumberPart;
    const bool has_length = has_valid_length(given.number);
    for (unsigned byte = 0; byte <= given.count; ++byte) {
        std::string wrong;
        for (const Fault &fault : faults) {
            if (fault.byte == byte) wrong += "  <- " + describe(fault, given);
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
        append(text, "  byte %2u  %02X  %3u  ", byte, bytes[byte], bytes[byte]);
        text += meaning(given.number, byte) + wrong + '\n';
    }
    // What the library makes of the bytes, faults or not; it must have them all.
    char decimal[max_result];
    std::string reason;
    const bool is_complete = given.count > bytes[0];
    const char *const end =
        is_complete ? write_number(Form::text, given.number, decimal, reason) : nullptr;
    text += "  value    ";
    text += end == nullptr ? "none\n" : std::string(decimal, static_cast<size_t>(end - decimal));
    return text;
}

}  // namespace

Command add_inspect(CLI::App &tool) {
    struct Options {
        Inputs inputs;
        Form from = Form::text;
        CLI::Option *form_option = nullptr;
    };
    const auto options = std::make_shared<Options>();
    CLI::App *const app = tool.add_subcommand("inspect", "Number bytes explained, a row a byte");
    app->footer(
        "VALUE is decimal text, hex or a byte list. Digits alone are decimal text: write\n"
        "the bytes 01 80 with a blank between them, or force the form with --from. Rows\n"
        "of malformed bytes say what is wrong, and the exit status is then 1.\n\n"
        "Examples:\n"
        "  ocinumber inspect -123.45\n"
        "  ocinumber inspect 03C20218 'Len=3: 194,2,24'\n"
        "  ocinumber inspect --from hex 0180");
    options->form_option =
        add_form(*app, "--from", options->from, all_forms,
                 "Form of the values; without it each is\nrecognised by its looks", false);
    add_inputs(*app, options->inputs, "VALUE");
    return {app, [options](Output &out) {
                std::optional<Form> forced;
                if (options->form_option->count() > 0) forced = options->from;
                bool well_formed = true;
                const bool good = for_each_value(
                    options->inputs, framing_of(options->from, options->inputs),
                    [&](std::string_view value, char *result, std::string &reason) -> char * {
                        const Form form = forced.value_or(detect(value));
                        GivenBytes given;
                        if (!read_bytes(form, value, given, reason)) return nullptr;
                        const Faults faults = find_faults(given);
                        well_formed &= faults.malformed() == nullptr;
                        const std::string text =
                            explain(form == Form::raw ? hex_text(value) : value, given, faults);
                        return result + text.copy(result, text.size());
                    },
                    out);
                return good && well_formed;
            }};
}

}  // namespace number_tool
