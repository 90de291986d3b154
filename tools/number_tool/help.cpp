#include "help.h"

#include <algorithm>
#include <memory>

#include "messages.h"
#include "oci.h"
#include "options.h"

namespace number_tool {

namespace {

constexpr size_t width = 79;
constexpr size_t option_column = 26;

constexpr const char *summary =
    "Converts between decimal text and 22-byte base-100 numbers, and computes with them.";
constexpr const char *statuses =
    "Exit status: 0 all went well; 1 a value, file or write failed; 2 wrong usage or no memory.";

// Breaks paragraphs at blanks; lines behind the first start with `indent` blanks.
std::string wrapped(const std::string &text, size_t indent) {
    std::string lines;
    size_t column = indent;
    for (size_t at = 0; at < text.size();) {
        if (text[at] == '\n') {
            lines += '\n';
            column = 0;
            ++at;
            continue;
        }
        const size_t end = std::min(text.find_first_of(" \n", at), text.size());
        if (column > indent && column + 1 + (end - at) > width) {
            lines += '\n' + std::string(indent, ' ');
            column = indent;
        } else if (column > indent) {
            lines += ' ';
            ++column;
        }
        lines += text.substr(at, end - at);
        column = std::max(column, indent) + (end - at);
        at = end + (end < text.size() && text[end] == ' ');
    }
    return lines + '\n';
}

std::string indented(const std::string &lines) {
    std::string text = "  ";
    for (const char c : lines) {
        text += c;
        if (c == '\n') text += "  ";
    }
    return text + '\n';
}

std::string option_line(const OptionText &option) {
    std::string line = option.short_name.empty() ? "      " : "  " + option.short_name + ", ";
    line += option.long_name + (option.value.empty() ? "" : " " + option.value);
    if (line.size() + 2 > option_column) {
        line += '\n' + std::string(option_column, ' ');
    } else {
        line.resize(option_column, ' ');
    }
    return line + wrapped(option.description, option_column);
}

std::vector<std::string> choices_of(const std::string &description) {
    const size_t bar = description.find('|');
    if (bar == description.npos) return {};
    const size_t begin = description.rfind(' ', bar) + 1;
    const std::string list =
        description.substr(begin, std::min(description.find(' ', bar), description.size()) - begin);
    std::vector<std::string> choices;
    for (size_t at = 0; at <= list.size();) {
        const size_t end = std::min(list.find('|', at), list.size());
        choices.push_back(list.substr(at, end - at));
        at = end + 1;
    }
    return choices;
}

}  // namespace

std::vector<OptionText> options_of(const CLI::App &command) {
    std::vector<OptionText> options;
    for (const CLI::Option *option : command.get_options()) {
        if (option->get_lnames().empty()) continue;
        OptionText text;
        if (!option->get_snames().empty()) text.short_name = "-" + option->get_snames()[0];
        text.long_name = "--" + option->get_lnames()[0];
        if (option->get_expected_max() > 0) text.value = option->get_type_name();
        text.description = option->get_description();
        text.group = option->get_group();
        if (option->get_required()) text.description += " (required)";
        text.choices = choices_of(text.description);
        options.push_back(std::move(text));
    }
    return options;
}

std::string tool_help(const std::vector<Command> &commands) {
    std::string text =
        wrapped(summary, 0) + "\nUsage: ocinumber COMMAND [OPTION]... [VALUE]...\n\nCommands:\n";
    for (const Command &command : commands) {
        std::string line = "  " + command.app->get_name();
        line.resize(14, ' ');
        text += line + command.app->get_description() + '\n';
    }
    return text + '\n' +
           wrapped(
               "\"ocinumber COMMAND --help\" or \"ocinumber help COMMAND\" tells a command's "
               "options and examples, \"ocinumber --version\" the version.",
               0) +
           '\n' + wrapped(statuses, 0) +
           "\nExample:\n  ocinumber encode 1.5 -2 | ocinumber decode\n";
}

std::string command_help(const Command &command) {
    std::string text = command.app->get_description() + "\n\nUsage: ocinumber " +
                       command.app->get_name() + " [OPTION]... " + command.values + "\n";
    if (!command.details.empty()) text += '\n' + wrapped(command.details, 0);
    std::string group;
    for (const OptionText &option : options_of(*command.app)) {
        if (option.group != group) text += '\n' + option.group + ":\n";
        group = option.group;
        text += option_line(option);
    }
    if (!command.examples.empty()) text += "\nExamples:\n" + indented(command.examples);
    return text;
}

std::vector<Command> add_help(CLI::App &tool, const std::vector<Command> &commands) {
    struct Words {
        std::vector<std::string> names;
        const std::string &only(const char *what) const {
            static const std::string none;
            if (names.size() > 1) throw CLI::ValidationError(what, "one is enough");
            return names.empty() ? none : names[0];
        }
    };
    const auto add = [&](const char *name, const char *description, std::string values) {
        const auto words = std::make_shared<Words>();
        CLI::App *const app = tool.add_subcommand(name, description);
        add_values(*app, words->names);
        return std::pair(Command{app, std::move(values), {}, {}, {}}, words);
    };
    const auto find = [&commands](const std::string &name) {
        const auto found =
            std::find_if(commands.begin(), commands.end(),
                         [&](const Command &command) { return command.app->get_name() == name; });
        if (found == commands.end()) throw CLI::ValidationError(name, "no such command");
        return *found;
    };
    auto [help, help_words] = add("help", "What a command does", "[COMMAND]");
    help.examples = "ocinumber help encode";
    help.run = [&commands, find, words = help_words](Output &out) {
        const std::string &name = words->only("help");
        out.write(name.empty() ? tool_help(commands) : command_help(find(name)));
        return 0;
    };
    auto [page, page_words] = add("man", "Manual pages for man", "[COMMAND]");
    page.details = "Without a command, the page of the tool.";
    page.examples = "ocinumber man encode | man -l -";
    page.run = [&commands, find, words = page_words](Output &out) {
        const std::string &name = words->only("man");
        out.write(name.empty() ? tool_page(commands) : command_page(find(name)));
        return 0;
    };
    auto [script, script_words] =
        add("completion", "A script that completes command lines", "SHELL");
    script.details = "SHELL is bash, zsh or fish.";
    script.examples = "source <(ocinumber completion bash)\nocinumber completion fish | source";
    script.run = [&commands, words = script_words](Output &out) {
        const std::string &shell = words->only("completion");
        const std::string text = completion(shell, commands);
        if (text.empty())
            throw CLI::ValidationError("completion", in_quotes(shell) + " is not bash|zsh|fish");
        out.write(text);
        return 0;
    };
    return {help, page, script};
}

}  // namespace number_tool
