// Commands that compute one number from one number: round, trunc, prec, shift,
// abs, neg.
#include "commands.h"
#include "library_error.h"

namespace number_tool {

namespace {

struct NumberOperation {
    const char *name;
    const char *description;
    // The option that takes the count; null when there is none.
    const char *option;
    const char *option_description;
    bool option_required;
    sword (*call)(OCIError *err, const OCINumber *number, sword count, OCINumber *result);
    const char *examples;
};

constexpr NumberOperation operations[] = {
    {"round", "Round to decimal places, half away from zero", "--places",
     "Decimal places to keep; -1 rounds to tens\n(default 0)", false, OCINumberRound,
     "  ocinumber round --places 2 123.456    123.46\n"
     "  ocinumber round --places -1 -15       -20"},
    {"trunc", "Cut to decimal places, toward zero", "--places",
     "Decimal places to keep; -1 keeps tens (default 0)", false, OCINumberTrunc,
     "  ocinumber trunc --places 1 -99.99     -99.9"},
    {"prec", "Round to significant digits, half away from zero", "--digits",
     "Significant decimal digits to keep", true, OCINumberPrec,
     "  ocinumber prec --digits 4 123.456     123.5"},
    {"shift", "Multiply by a power of ten", "--by", "The power", true, OCINumberShift,
     "  ocinumber shift --by -2 4711          47.11"},
    {"abs", "The magnitude", nullptr, nullptr, false,
     [](OCIError *err, const OCINumber *number, sword, OCINumber *result) {
         return OCINumberAbs(err, number, result);
     },
     "  ocinumber abs -1.5                    1.5"},
    {"neg", "The negation", nullptr, nullptr, false,
     [](OCIError *err, const OCINumber *number, sword, OCINumber *result) {
         return OCINumberNeg(err, number, result);
     },
     "  ocinumber neg 1.5                     -1.5"},
};

Command add_operation(CLI::App &tool, const NumberOperation &operation) {
    struct Options {
        Inputs inputs;
        Form from = Form::text;
        Form to = Form::text;
        sword count = 0;
    };
    const auto options = std::make_shared<Options>();
    CLI::App *const app = tool.add_subcommand(operation.name, operation.description);
    app->footer(std::string("Examples:\n") + operation.examples);
    if (operation.option != nullptr) {
        add_count(*app, operation.option, options->count, operation.option_description)
            ->required(operation.option_required);
    }
    add_form(*app, "--from", options->from, all_forms, "Form of the values");
    add_strict(*app, options->from);
    add_form(*app, "--to", options->to, all_forms, "Form of the results");
    add_inputs(*app, options->inputs, "VALUE");
    return {
        app, [options, call = operation.call](Output &out) {
            const LibraryError err;
            return for_each_value(
                options->inputs, framing_of(options->from, options->inputs),
                [&](std::string_view value, char *end, std::string &reason) -> char * {
                    GivenBytes given;
                    if (!read_number(options->from, value, given, reason)) return nullptr;
                    OCINumber result{};
                    if (call(err.handle(), &given.number, options->count, &result) != OCI_SUCCESS) {
                        reason = err.message();
                        return nullptr;
                    }
                    return write_number(options->to, result, end, reason);
                },
                out);
        }};
}

}  // namespace

std::vector<Command> add_operations(CLI::App &tool) {
    std::vector<Command> commands;
    for (const NumberOperation &operation : operations) {
        commands.push_back(add_operation(tool, operation));
    }
    return commands;
}

}  // namespace number_tool
