#include <memory>

#include "commands.h"
#include "decimal.h"
#include "expression.h"
#include "library_error.h"
#include "messages.h"
#include "number_stream.h"

namespace number_tool {

namespace {

struct Options {
    StreamOptions stream;
    Form to = Form::text;
    Variables variables;
    Expression expression;  // of columns, when it reads some
};

void add_variable(Variables &variables, const std::string &text) {
    const size_t equals = text.find('=');
    const std::string name = text.substr(0, equals);
    if (equals == text.npos || !is_free_name(name)) {
        throw CLI::ValidationError(
            "--variable",
            in_quotes(text) +
                " is not NAME=NUMBER, with a name of letters, digits and _ that no function has");
    }
    OCINumber number{};
    std::string reason;
    if (!read_decimal(std::string_view(text).substr(equals + 1), false, number, reason)) {
        throw CLI::ValidationError("--variable", in_quotes(text) + ": " + reason);
    }
    variables[name] = number;
}

// An expression that reads columns is computed for each line of the files behind it.
void take_column_expression(Options &options) {
    std::vector<std::string> &values = options.stream.inputs.values;
    if (values.empty() || values[0].find('$') == std::string::npos) return;
    std::string reason;
    if (!options.expression.read(values[0], options.variables, LibraryError(), reason)) {
        throw CLI::ValidationError("expression", in_quotes(values[0]) + ": " + reason);
    }
    std::vector<std::string> &files = options.stream.inputs.files;
    files.insert(files.begin(), values.begin() + 1, values.end());
    values.clear();
    options.stream.reads_columns = true;
    if (options.stream.fields.empty()) options.stream.results = ResultPlace::alone;
}

Operation make_operation(const Options &options) {
    return [&options, error = std::make_shared<LibraryError>(), expression = options.expression](
               const Value &value, char *out, std::string &reason) mutable -> char * {
        if (!options.stream.reads_columns) {
            if (!expression.read(value.text, options.variables, *error, reason)) return nullptr;
            if (expression.reads_columns()) {
                reason = "columns are read by an expression given as an argument";
                return nullptr;
            }
        }
        OCINumber result{};
        if (!expression.compute(value.line, *error, result, reason)) return nullptr;
        return write_number(options.to, result, out, reason);
    };
}

}  // namespace

Command add_calc(CLI::App &tool) {
    const auto options = std::make_shared<Options>();
    CLI::App *const app = tool.add_subcommand("calc", "Compute expressions, or columns");
    add_text(
        *app, "-v,--variable", "NAME=NUMBER",
        [options](const std::string &text) { add_variable(options->variables, text); },
        "A number that the expression has by this name; may be repeated");
    add_form(*app, "--to", options->to, forms_written, "Form of the results");
    add_stream_options(*app, options->stream);
    return {app, "[EXPRESSION]... | EXPRESSION [FILE]...",
            "Operators, from the weakest: the comparisons < <= > >= == !=, which give 1 or 0; + "
            "-; * / %; the sign -; ^ (right to left). Numbers may have an exponent: 1.5e-3; ~ is "
            "infinity. Every step is rounded to a number.\n\n"
            "An expression with $1, $2, ... is computed for each line of the files, of which $1 "
            "is the first field; --field puts the result into the line.\n\n"
            "Names: " +
                function_names() + ".",
            "ocinumber calc 'sqrt(2)*ln(10)^2'\n"
            "seq 10 | sed 's/.*/exp(&)/' | ocinumber calc\n"
            "ocinumber calc -v rate=0.19 'round($2 * (1 + rate), 2)' prices.csv",
            [options](Output &out) {
                take_column_expression(*options);
                settle(options->stream, Form::text, options->to);
                return for_each_value(
                           options->stream, [&] { return make_operation(*options); }, out)
                    .status();
            }};
}

}  // namespace number_tool
