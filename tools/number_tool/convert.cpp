#include "commands.h"

namespace number_tool {

Command add_convert(CLI::App &tool) {
    struct Options {
        Inputs inputs;
        Form from = Form::text;
        Form to = Form::text;
    };
    const auto options = std::make_shared<Options>();
    CLI::App *const app = tool.add_subcommand("convert", "Numbers from any form to any other");
    app->footer(
        "encode is \"convert --to hex\", decode \"convert --from hex\". The plain order of\n"
        "sortable bytes is the order of the numbers.\n\n"
        "Examples:\n"
        "  ocinumber convert --from hex --to list 03C20218\n"
        "  ocinumber convert --to sortable -f amounts.txt | LC_ALL=C sort |\n"
        "      ocinumber convert --from sortable");
    add_form(*app, "--from", options->from, all_forms, "Form of the values");
    add_strict(*app, options->from);
    add_form(*app, "--to", options->to, all_forms, "Form of the results");
    add_inputs(*app, options->inputs, "VALUE");
    return {
        app, [options](Output &out) {
            const Form from = options->from, to = options->to;
            return for_each_value(
                options->inputs, framing_of(from, options->inputs),
                [from, to](std::string_view value, char *result, std::string &reason) -> char * {
                    GivenBytes given;
                    if (!read_number(from, value, given, reason)) return nullptr;
                    return write_number(to, given.number, result, reason);
                },
                out);
        }};
}

}  // namespace number_tool
