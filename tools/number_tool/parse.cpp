#include <memory>

#include "commands.h"
#include "library_error.h"
#include "messages.h"
#include "number_stream.h"

namespace number_tool {

namespace {

bool parse_text(const LibraryError &error, std::string_view text, const std::string &model,
                OCINumber &number, std::string &reason) {
    if (OCINumberFromText(error.handle(), reinterpret_cast<const OraText *>(text.data()),
                          static_cast<ub4>(text.size()),
                          reinterpret_cast<const OraText *>(model.data()),
                          static_cast<ub4>(model.size()), nullptr, 0, &number) == OCI_SUCCESS) {
        return true;
    }
    // The message quotes the value, which the report names already.
    reason = error.message();
    if (error.code() == 22062) reason = "no decimal text under the model " + in_quotes(model);
    if (text.empty()) reason = "no value";
    return false;
}

// Refuses a model before any text is read.
void check_model(const std::string &model) {
    const LibraryError error;
    OCINumber number;
    std::string reason;
    if (!parse_text(error, "0", model, number, reason) && error.code() == 22061) {
        throw CLI::ValidationError("--model", reason);
    }
    if (model.find_first_of("09") == model.npos) {
        throw CLI::ValidationError("--model", "no text matches a model without digits");
    }
}

}  // namespace

Command add_parse(CLI::App &tool) {
    struct Options {
        StreamOptions stream;
        Form to = Form::text;
        std::string model;
    };
    const auto options = std::make_shared<Options>();
    CLI::App *const app = tool.add_subcommand("parse", "Texts under a format model to numbers");
    add_model(*app, options->model);
    add_form(*app, "--to", options->to, forms_written, "Form of the numbers");
    add_stream_options(*app, options->stream);
    const auto make_operation = [options]() -> Operation {
        return [options, error = std::make_shared<LibraryError>()](const Value &value, char *out,
                                                                   std::string &reason) -> char * {
            OCINumber parsed{};
            if (!parse_text(*error, value.text, options->model, parsed, reason)) return nullptr;
            return write_number(options->to, parsed, out, reason);
        };
    };
    return {app, "[TEXT]...",
            "A model has digit positions 9, which a text may leave out in front, and 0, which it "
            "may not, with at most one period.",
            "ocinumber parse --model 9999.99 123.45 -0.5\n"
            "ocinumber parse --model 0999 --to hex --file codes.txt",
            [options, make_operation](Output &out) {
                check_model(options->model);
                settle(options->stream, Form::text, options->to);
                return for_each_value(options->stream, make_operation, out).status();
            }};
}

}  // namespace number_tool
