// ocinumber: the number library on the command line.
//
// Exit status: 0 all went well, 1 a value, file or write failed, 2 wrong usage.
#include <algorithm>
#include <csignal>
#include <cstring>
#include <sstream>

#include "commands.h"

#define STRING_OF(number) #number
#define VERSION_TEXT(major, minor, patch) \
    "ocinumber " STRING_OF(major) "." STRING_OF(minor) "." STRING_OF(patch)

namespace number_tool {

namespace {

// A byte in front of an argument that hides from the option parser what looks
// like an option and is a value.
constexpr char value_mark = '\1';

std::vector<std::string> unmarked(std::vector<std::string> arguments) {
    for (std::string &argument : arguments) {
        if (argument.starts_with(value_mark)) argument.erase(0, 1);
    }
    return arguments;
}

}  // namespace

void add_inputs(CLI::App &command, Inputs &inputs, const char *value_name) {
    // Raw callbacks: the values are taken as they are, also {} and %%.
    command
        .add_option(
            value_name,
            [&inputs](const CLI::results_t &values) {
                inputs.values = unmarked(values);
                return true;
            },
            "Values; standard input is read when there are neither values nor files")
        ->type_name("")
        ->expected(1, -1)
        ->allow_extra_args();
    command
        .add_option(
            "-f,--file",
            [&inputs](const CLI::results_t &files) {
                inputs.files = unmarked(files);
                return true;
            },
            "File of values, read after the values given as arguments; - is standard\n"
            "input; may be repeated")
        ->type_name("FILE")
        ->expected(1)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
}

CLI::Option *add_form(CLI::App &command, const char *option, Form &form, const std::string &forms,
                      const char *description) {
    return command
        .add_option(
            option,
            [&form, forms, option](const CLI::results_t &names) {
                const auto found = form_names().find(names.back());
                if (found == form_names().end() ||
                    (found->second == Form::text && !forms.starts_with("text"))) {
                    throw CLI::ValidationError(option,
                                               in_quotes(names.back()) + " is not " + forms);
                }
                form = found->second;
                return true;
            },
            description)
        ->type_name(forms)
        ->expected(1);
}

void add_model(CLI::App &command, std::string &model) {
    command
        .add_option(
            "-m,--model",
            [&model](const CLI::results_t &models) {
                model = models.back();
                return true;
            },
            "Format model")
        ->type_name("MODEL")
        ->expected(1)
        ->required();
}

Framing framing_of(Form form, const Inputs &inputs) {
    if (form != Form::raw) return Framing::lines;
    if (!inputs.values.empty()) {
        throw CLI::ValidationError("--from raw", "records are read from files or standard input");
    }
    return Framing::records;
}

namespace {

// The arguments as the parser takes them, from the last to the first. Those
// that would be taken for options are marked: negative values that do not start
// with a digit, and all behind "--".
std::vector<std::string> mark_values(int argc, char **argv) {
    std::vector<std::string> arguments;
    bool only_values = false;
    for (int i = 1; i < argc; ++i) {
        std::string argument = argv[i];
        if (argument == "--" && !only_values) {
            only_values = true;
            continue;
        }
        if (only_values || argument.starts_with("-.") || argument.starts_with("-~") ||
            argument == "++") {
            argument.insert(0, 1, value_mark);
        }
        arguments.push_back(std::move(argument));
    }
    std::reverse(arguments.begin(), arguments.end());
    return arguments;
}

int run(int argc, char **argv, Output &out) {
    CLI::App tool(
        "Converts between decimal text and 22-byte base-100 numbers.\n"
        "Exit status: 0 all went well; 1 a value, file or write failed; 2 wrong usage.",
        "ocinumber");
    tool.footer(
        "Run \"ocinumber COMMAND --help\" for a command's options and examples.\n\n"
        "Example:\n"
        "  ocinumber encode 1.5 -2 | ocinumber decode");
    tool.set_version_flag(
        "--version",
        VERSION_TEXT(OCI_NUMBER_VERSION_MAJOR, OCI_NUMBER_VERSION_MINOR, OCI_NUMBER_VERSION_PATCH));
    tool.require_subcommand(1);
    std::vector<Command> commands = {add_encode(tool), add_decode(tool), add_inspect(tool),
                                     add_format(tool), add_parse(tool),  add_calc(tool)};
    for (Command &command : add_operations(tool)) commands.push_back(std::move(command));
    try {
        tool.parse(mark_values(argc, argv));
        bool good = true;
        for (const Command &command : commands) {
            if (command.app->parsed()) good &= command.run(out);
        }
        return good ? 0 : 1;
    } catch (const CLI::ParseError &error) {
        std::ostringstream text, message;
        const int status = tool.exit(error, text, message);
        out.write(text.str());
        std::string wrong = message.str();
        while (wrong.ends_with('\n')) wrong.pop_back();
        if (status != 0) report(wrong);
        return status == 0 ? 0 : 2;
    }
}

}  // namespace

}  // namespace number_tool

int main(int argc, char **argv) {
    using namespace number_tool;
    // A closed pipe shows as the write's error.
    std::signal(SIGPIPE, SIG_IGN);
    Output out;
    try {
        const int status = run(argc, argv, out);
        out.close();
        return status;
    } catch (const OutputClosed &) {
        return 0;
    } catch (const OutputFailed &failure) {
        report(std::string("standard output: ") + std::strerror(failure.error));
        return 1;
    }
}
