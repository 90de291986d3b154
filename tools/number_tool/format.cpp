#include "commands.h"
#include "library_error.h"

namespace number_tool {

namespace {

// Writes the number's text under the model, with a line end.
char *format_number(LibraryError &error, const OCINumber &number, const std::string &model,
                    char *out, std::string &reason) {
    ub4 size = max_result - 1;
    if (OCINumberToText(error.handle(), &number, reinterpret_cast<const OraText *>(model.data()),
                        static_cast<ub4>(model.size()), nullptr, 0, &size,
                        reinterpret_cast<OraText *>(out)) != OCI_SUCCESS) {
        // The library's message has nothing but the record's address.
        reason = error.code() == 602 ? "no text of 128 characters or fewer" : error.message();
        return nullptr;
    }
    out[size] = '\n';
    return out + size + 1;
}

// TM has all that a number needs, other models the positions that they name.
bool has_positions(std::string_view model) {
    const bool is_tm = model.size() >= 2 && (model[0] | 0x20) == 't';
    return is_tm || model.find_first_of("09") != model.npos;
}

}  // namespace

Command add_format(CLI::App &tool) {
    struct Options {
        Inputs inputs;
        Form from = Form::text;
        std::string model;
        LibraryError error;
    };
    const auto options = std::make_shared<Options>();
    CLI::App *const app = tool.add_subcommand("format", "Numbers to texts under a format model");
    app->footer(
        "A model is TM or TM9 for all digits, or digit positions 9 and 0 with at most one\n"
        "period, FM before them to leave out blanks and padding.\n\n"
        "Examples:\n"
        "  ocinumber format --model 9990.99 123.456 -0.5\n"
        "  ocinumber format --model FM9990.99 --from raw --file amounts.raw");
    add_model(*app, options->model);
    add_form(*app, "--from", options->from, all_forms, "Form of the numbers");
    add_strict(*app, options->from);
    add_inputs(*app, options->inputs, "NUMBER");
    return {app, [options](Output &out) {
                // Refuses a model before any number is read.
                constexpr OCINumber zero = {{1, 128}};
                std::string reason;
                if (format_number(options->error, zero, options->model, out.room(), reason) ==
                        nullptr &&
                    options->error.code() == 22061) {
                    throw CLI::ValidationError("--model", reason);
                }
                if (!has_positions(options->model)) {
                    throw CLI::ValidationError("--model",
                                               in_quotes(options->model) + " has no positions");
                }
                const Form from = options->from;
                return for_each_value(
                    options->inputs, framing_of(from, options->inputs),
                    [&options, from](std::string_view value, char *result, std::string &fault) {
                        GivenBytes given;
                        return read_number(from, value, given, fault)
                                   ? format_number(options->error, given.number, options->model,
                                                   result, fault)
                                   : nullptr;
                    },
                    out);
            }};
}

}  // namespace number_tool
