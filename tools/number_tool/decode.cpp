#include "commands.h"

namespace number_tool {

Command add_decode(CLI::App &tool) {
    struct Options {
        Inputs inputs;
        Form from = Form::hex;
    };
    const auto options = std::make_shared<Options>();
    CLI::App *const app = tool.add_subcommand("decode", "Number bytes to decimal texts");
    app->footer(
        "Values are number bytes, one number a line, or 22-byte records with --from raw.\n"
        "Hex starts at the length byte, in either case, with blanks between bytes or not.\n"
        "Words in front of a list's Len= are skipped. Infinities become ~ and -~.\n\n"
        "Examples:\n"
        "  ocinumber decode 03C20218             123\n"
        "  ocinumber decode --from list 'Len=3: 194,2,24'\n"
        "  ocinumber decode --from raw --file amounts.raw");
    add_form(*app, "--from", options->from, byte_forms, "Form of the bytes");
    add_inputs(*app, options->inputs, "BYTES");
    return {app, [options](Output &out) {
                const Form from = options->from;
                return for_each_value(
                    options->inputs, framing_of(from, options->inputs),
                    [from](std::string_view value, char *result, std::string &reason) -> char * {
                        GivenBytes given;
                        if (!read_number(from, value, given, reason)) return nullptr;
                        return write_number(Form::text, given.number, result, reason);
                    },
                    out);
            }};
}

}  // namespace number_tool
