// What the tool says of itself, all made from the commands and their options.
#pragma once

#include <string>
#include <vector>

#include "commands.h"

namespace number_tool {

std::string tool_help(const std::vector<Command> &commands);
std::string command_help(const Command &command);

// Manual pages for man(1): of the tool, and of a command.
std::string tool_page(const std::vector<Command> &commands);
std::string command_page(const Command &command);

// A script that completes command lines in "bash", "zsh" or "fish"; empty for another shell.
std::string completion(const std::string &shell, const std::vector<Command> &commands);

// An option as the user writes it.
struct OptionText {
    std::string short_name, long_name;  // "-f", "--file"; the short one may be empty
    std::string value;                  // "FILE"; empty for a flag
    std::string description;
    std::string group;
    std::vector<std::string> choices;  // what the value may be, when the description lists it
};
std::vector<OptionText> options_of(const CLI::App &command);

}  // namespace number_tool
