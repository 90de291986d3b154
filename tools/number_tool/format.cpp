#include <algorithm>
#include <memory>

#include "commands.h"
#include "library_error.h"
#include "number_stream.h"

namespace number_tool {

namespace {

// Writes the number's text under the model.
char *format_number(const LibraryError &error, const OCINumber &number, const std::string &model,
                    char *out, std::string &reason) {
    ub4 size = max_result;
    if (OCINumberToText(error.handle(), &number, reinterpret_cast<const OraText *>(model.data()),
                        static_cast<ub4>(model.size()), nullptr, 0, &size,
                        reinterpret_cast<OraText *>(out)) != OCI_SUCCESS) {
        // The library's message has nothing but the record's address.
        reason = error.code() == 602 ? "no text of 128 characters or fewer" : error.message();
        return nullptr;
    }
    return out + size;
}

// Refuses a model before any number is read.
void check_model(const std::string &model) {
    if (model.empty()) throw CLI::ValidationError("--model", "no model");
    const LibraryError error;
    constexpr OCINumber zero = {{1, 128}};
    char text[max_result];
    std::string reason;
    const bool fits = format_number(error, zero, model, text, reason) != nullptr;
    if (!fits && error.code() == 22061) throw CLI::ValidationError("--model", reason);
    if (!fits && model.find_first_of("09") == model.npos) {
        throw CLI::ValidationError("--model", "no number has a text under a model without digits");
    }
}

}  // namespace

Command add_format(CLI::App &tool) {
    struct Options {
        StreamOptions stream;
        Reading from;
        std::string model;
    };
    const auto options = std::make_shared<Options>();
    CLI::App *const app = tool.add_subcommand("format", "Numbers to texts under a format model");
    add_model(*app, options->model);
    add_form(*app, "--from", options->from.form, forms_read, "Form of the numbers");
    add_strict(*app, options->from.is_strict);
    add_stream_options(*app, options->stream);
    const auto make_operation = [options]() -> Operation {
        return [options, error = std::make_shared<LibraryError>()](const Value &value, char *out,
                                                                   std::string &reason) -> char * {
            OCINumber room;
            const OCINumber *const number = read_number(options->from, value.text, room, reason);
            if (number == nullptr) return nullptr;
            return format_number(*error, *number, options->model, out, reason);
        };
    };
    return {app, "[NUMBER]...",
            "A model is TM or TM9 for all digits, or digit positions 9 and 0 with at most one "
            "period, FM before them to leave out blanks and padding.",
            "ocinumber format --model 9990.99 123.456 -0.5\n"
            "ocinumber format --model FM9990.99 --from raw --file amounts.raw",
            [options, make_operation](Output &out) {
                check_model(options->model);
                settle(options->stream, options->from.form, Form::text);
                return for_each_value(options->stream, make_operation, out).status();
            }};
}

}  // namespace number_tool
