// The tool's commands, each in the file of its name.
#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <memory>
#include <vector>

#include "forms.h"
#include "stream.h"

namespace number_tool {

struct Command {
    CLI::App *app;
    // Runs the command; true when all went well.
    std::function<bool(Output &)> run;
};

Command add_encode(CLI::App &tool);
Command add_decode(CLI::App &tool);
Command add_convert(CLI::App &tool);
Command add_inspect(CLI::App &tool);
Command add_format(CLI::App &tool);
Command add_parse(CLI::App &tool);
Command add_calc(CLI::App &tool);
// round, trunc, prec, shift, abs, neg.
std::vector<Command> add_operations(CLI::App &tool);

// Gives a command the arguments that name its inputs.
void add_inputs(CLI::App &command, Inputs &inputs, const char *value_name);

// Gives a command an option for one of `forms`, names separated by "|"; `form`
// holds the default.
CLI::Option *add_form(CLI::App &command, const char *option, Form &form, const std::string &forms,
                      const char *description, bool has_default = true);

// Gives a command the flag that makes Form::text of `form` Form::strict_text.
void add_strict(CLI::App &command, Form &form);

// Gives a command an option for a decimal integer; `count` holds the default.
CLI::Option *add_count(CLI::App &command, const char *option, sword &count,
                       const char *description);

// Gives a command the option that names its format model.
void add_model(CLI::App &command, std::string &model);

// Raw records come from files; throws CLI::ValidationError for other values.
Framing framing_of(Form form, const Inputs &inputs);

}  // namespace number_tool
