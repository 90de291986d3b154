// Commands that compute one number from one number: round, trunc, prec, shift,
// abs, neg.
#include <memory>

#include "commands.h"
#include "library_error.h"
#include "number_stream.h"

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
     "Decimal places to keep; -1 rounds to tens (default 0)", false, OCINumberRound,
     "ocinumber round --places 2 123.456    123.46\n"
     "ocinumber round --places -1 -15       -20"},
    {"trunc", "Cut to decimal places, toward zero", "--places",
     "Decimal places to keep; -1 keeps tens (default 0)", false, OCINumberTrunc,
     "ocinumber trunc --places 1 -99.99     -99.9"},
    {"prec", "Round to significant digits, half away from zero", "--digits",
     "Significant decimal digits to keep", true, OCINumberPrec,
     "ocinumber prec --digits 4 123.456     123.5"},
    {"shift", "Multiply by a power of ten", "--by", "The power", true, OCINumberShift,
     "ocinumber shift --by -2 4711          47.11"},
    {"abs", "The magnitude", nullptr, nullptr, false,
     [](OCIError *err, const OCINumber *number, sword, OCINumber *result) {
         return OCINumberAbs(err, number, result);
     },
     "ocinumber abs -1.5                    1.5"},
    {"neg", "The negation", nullptr, nullptr, false,
     [](OCIError *err, const OCINumber *number, sword, OCINumber *result) {
         return OCINumberNeg(err, number, result);
     },
     "ocinumber neg 1.5                     -1.5"},
};

Command add_operation(CLI::App &tool, const NumberOperation &operation) {
    struct Options {
        NumberStream numbers;
        sword count = 0;
    };
    const auto options = std::make_shared<Options>();
    NumberStream &numbers = options->numbers;
    CLI::App *const app = tool.add_subcommand(operation.name, operation.description);
    if (operation.option != nullptr) {
        add_count(*app, operation.option, options->count, operation.option_description)
            ->required(operation.option_required);
    }
    add_form(*app, "--from", numbers.from.form, forms_read, "Form of the values");
    add_form(*app, "--to", numbers.to, forms_written, "Form of the results");
    add_strict(*app, numbers.from.is_strict);
    add_stream_options(*app, numbers.stream);
    const auto make_function = [options, call = operation.call]() -> NumberFunction {
        return [options, call, error = std::make_shared<LibraryError>()](
                   const OCINumber &number, OCINumber &result, std::string &reason) {
            if (call(error->handle(), &number, options->count, &result) == OCI_SUCCESS) return true;
            reason = error->message();
            return false;
        };
    };
    return {app, "[VALUE]...", {}, operation.examples, [options, make_function](Output &out) {
                return options->numbers.compute(make_function, out).status();
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
