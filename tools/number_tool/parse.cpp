#include "commands.h"
#include "library_error.h"

namespace number_tool {

namespace {

bool parse_text(LibraryError &error, std::string_view text, const std::string &model,
                OCINumber &number, std::string &reason) {
    if (OCINumberFromText(error.handle(), reinterpret_cast<const OraText *>(text.data()),
                          static_cast<ub4>(text.size()),
                          reinterpret_cast<const OraText *>(model.data()),
                          static_cast<ub4>(model.size()), nullptr, 0, &number) == OCI_SUCCESS) {
        return true;
    }
    // The message quotes the value, which the report names already.
    reason = error.message();
    if (error.code() == 22062) reason = "no decimal text under the model \"" + model + "\"";
    if (text.empty()) reason = "no value";
    return false;
}

}  // namespace

Command add_parse(CLI::App &tool) {
    struct Options {
        Inputs inputs;
        Form to = Form::text;
        std::string model;
        LibraryError error;
    };
    const auto options = std::make_shared<Options>();
    CLI::App *const app = tool.add_subcommand("parse", "Texts under a format model to numbers");
    app->footer(
        "A model has digit positions 9, which a text may leave out in front, and 0, which\n"
        "it may not, with at most one period.\n\n"
        "Examples:\n"
        "  ocinumber parse --model 9999.99 123.45 -0.5\n"
        "  ocinumber parse --model 0999 --to hex --file codes.txt");
    add_model(*app, options->model);
    add_form(*app, "--to", options->to, all_forms, "Form of the numbers");
    add_inputs(*app, options->inputs, "TEXT");
    return {app, [options](Output &out) {
                // Refuses a model before any text is read.
                if (options->model.empty()) {
                    throw CLI::ValidationError("--model", "\"\" has no positions");
                }
                OCINumber number;
                std::string reason;
                if (!parse_text(options->error, "0", options->model, number, reason) &&
                    options->error.code() == 22061) {
                    throw CLI::ValidationError("--model", reason);
                }
                return for_each_value(
                    options->inputs, Framing::lines,
                    [&options](std::string_view value, char *result, std::string &fault) {
                        OCINumber parsed{};
                        return parse_text(options->error, value, options->model, parsed, fault)
                                   ? write_number(options->to, parsed, result, fault)
                                   : nullptr;
                    },
                    out);
            }};
}

}  // namespace number_tool
