#include "commands.h"

namespace number_tool {

Command add_encode(CLI::App &tool) {
    struct Options {
        Inputs inputs;
        Form from = Form::text;
        Form to = Form::hex;
    };
    const auto options = std::make_shared<Options>();
    CLI::App *const app = tool.add_subcommand("encode", "Decimal texts to number bytes");
    app->footer(
        "Values are decimal texts, one a line: a sign, digits with at most one period, an\n"
        "exponent, blanks and tabs around; ~ and -~ are the infinities. More than 20\n"
        "base-100 digits are rounded half away from zero; below 1E-128 a value becomes\n"
        "zero.\n\n"
        "Examples:\n"
        "  ocinumber encode 123 -0.5             03C20218 and 033F3366\n"
        "  ocinumber encode --to list 123        Len=3: 194,2,24\n"
        "  ocinumber encode --to raw --file amounts.txt > amounts.raw");
    add_form(*app, "--to", options->to, byte_forms, "Form of the bytes");
    add_strict(*app, options->from);
    add_inputs(*app, options->inputs, "TEXT");
    return {
        app, [options](Output &out) {
            const Form from = options->from, to = options->to;
            return for_each_value(
                options->inputs, Framing::lines,
                [from, to](std::string_view value, char *result, std::string &reason) -> char * {
                    GivenBytes given;
                    if (!read_number(from, value, given, reason)) return nullptr;
                    return write_number(to, given.number, result, reason);
                },
                out);
        }};
}

}  // namespace number_tool
