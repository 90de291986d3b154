#include "commands.h"
#include "expression.h"
#include "library_error.h"

namespace number_tool {

namespace {

// Breaks a list of names at blanks into lines of at most 78 bytes.
std::string wrapped(const std::string &names) {
    std::string lines;
    size_t start = 0;
    while (start < names.size()) {
        size_t end = names.size();
        if (end - start > 76) end = names.rfind("), ", start + 74) + 2;
        lines += "  " + names.substr(start, end - start) + "\n";
        start = end + 1;
    }
    return lines;
}

}  // namespace

Command add_calc(CLI::App &tool) {
    struct Options {
        Inputs inputs;
        Form to = Form::text;
    };
    const auto options = std::make_shared<Options>();
    CLI::App *const app = tool.add_subcommand("calc", "Compute expressions");
    app->footer(
        "Operators, from the weakest: + -, * / %, the sign -, ^ (right to left).\n"
        "Numbers may have an exponent: 1.5e-3. Every step is rounded to a number.\n"
        "Names:\n" +
        wrapped(expression_names()) +
        "\nExamples:\n"
        "  ocinumber calc 'sqrt(2)*ln(10)^2'\n"
        "  seq 10 | sed 's/.*/exp(&)/' | ocinumber calc");
    add_form(*app, "--to", options->to, all_forms, "Form of the results");
    add_inputs(*app, options->inputs, "EXPRESSION");
    return {app, [options](Output &out) {
                const LibraryError err;
                return for_each_value(
                    options->inputs, Framing::lines,
                    [&](std::string_view value, char *end, std::string &reason) -> char * {
                        OCINumber result{};
                        if (!evaluate(value, err, result, reason)) return nullptr;
                        return write_number(options->to, result, end, reason);
                    },
                    out);
            }};
}

}  // namespace number_tool
