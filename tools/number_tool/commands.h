// The tool's commands, each in the file of its name.
#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <string>
#include <vector>

#include "output.h"

namespace number_tool {

struct Command {
    CLI::App *app;         // its name, what it does in a line, its options
    std::string values;    // what stands behind the options
    std::string details;   // paragraphs
    std::string examples;  // lines
    // Returns the tool's exit status. Throws CLI::ValidationError for options that do not fit.
    std::function<int(Output &)> run;
};

// convert, and its short ones encode and decode.
std::vector<Command> add_conversions(CLI::App &tool);
Command add_inspect(CLI::App &tool);
Command add_format(CLI::App &tool);
Command add_parse(CLI::App &tool);
// round, trunc, prec, shift, abs, neg.
std::vector<Command> add_operations(CLI::App &tool);
Command add_calc(CLI::App &tool);
Command add_stats(CLI::App &tool);
// help, man, completion; they tell of all `commands`.
std::vector<Command> add_help(CLI::App &tool, const std::vector<Command> &commands);

}  // namespace number_tool
