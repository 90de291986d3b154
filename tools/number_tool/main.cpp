// ocinumber: the number library on the command line.
//
// Exit status: 0 all went well, 1 a value, file or write failed, 2 wrong usage.
#include <algorithm>
#include <charconv>
#include <csignal>
#include <cstring>
#include <sstream>

#include "arguments.h"
#include "commands.h"

namespace number_tool {

namespace {

// Options stand in a column of this width, so that help fits into 80.
constexpr size_t option_column = 27;

}  // namespace

void add_inputs(CLI::App &command, Inputs &inputs, const char *value_name) {
    // Raw callbacks: the values are taken as they are, also {} and %%.
    command
        .add_option(
            value_name,
            [&inputs](const CLI::results_t &values) {
                inputs.values = values_of(values);
                return true;
            },
            "Values; standard input is read when there are\n"
            "neither values nor files")
        ->type_name("")
        ->expected(1, -1)
        ->allow_extra_args();
    command
        .add_option(
            "-f,--file",
            [&inputs](const CLI::results_t &files) {
                inputs.files = values_of(files);
                return true;
            },
            "File of values, read after those given as\n"
            "arguments; - is standard input; may be repeated")
        ->type_name("FILE")
        ->expected(1)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
}

CLI::Option *add_form(CLI::App &command, const char *option, Form &form, const std::string &forms,
                      const char *description, bool has_default) {
    const auto default_name =
        std::find_if(form_names().begin(), form_names().end(),
                     [&form](const auto &name) { return name.second == form; });
    return command
        .add_option(
            option,
            [&form, forms, option](const CLI::results_t &names) {
                const std::string name = value_of(names.back());
                const auto found = form_names().find(name);
                if (found == form_names().end() ||
                    (found->second == Form::text && forms != all_forms)) {
                    throw CLI::ValidationError(option, in_quotes(name) + " is not " + forms);
                }
                form = found->second;
                return true;
            },
            description + (has_default ? " (default " + default_name->first + ")" : std::string()))
        ->type_name(forms)
        ->expected(1);
}

void add_strict(CLI::App &command, Form &form) {
    // The parser calls this after the form's own option, which is added before.
    command.add_flag_function(
        "--strict",
        [&form](std::int64_t) {
            if (form == Form::text) form = Form::strict_text;
        },
        "Decimal text without exponent, \"+\", tabs and\nblanks behind");
}

CLI::Option *add_count(CLI::App &command, const char *option, sword &count,
                       const char *description) {
    return command
        .add_option(
            option,
            [&count, option](const CLI::results_t &numbers) {
                const std::string number = value_of(numbers.back());
                const char *const end = number.data() + number.size();
                const auto [parsed, error] = std::from_chars(number.data(), end, count);
                if (parsed != end || error != std::errc{}) {
                    throw CLI::ValidationError(
                        option, in_quotes(number) + " is no decimal integer of 32 bits");
                }
                return true;
            },
            description)
        ->type_name("N")
        ->expected(1);
}

void add_model(CLI::App &command, std::string &model) {
    command
        .add_option(
            "-m,--model",
            [&model](const CLI::results_t &models) {
                model = value_of(models.back());
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

int run(int argc, char **argv, Output &out) {
    CLI::App tool(
        "Converts between decimal text and 22-byte base-100 numbers.\n"
        "Exit status: 0 all went well; 1 a value, file or write failed; 2 wrong usage.",
        "ocinumber");
    tool.footer(
        "Run \"ocinumber COMMAND --help\" for a command's options and examples.\n\n"
        "Example:\n"
        "  ocinumber encode 1.5 -2 | ocinumber decode");
    tool.set_version_flag("--version", "ocinumber " OCI_NUMBER_VERSION);
    tool.get_formatter()->column_width(option_column);
    tool.require_subcommand(1);
    std::vector<Command> commands = {add_encode(tool),  add_decode(tool), add_convert(tool),
                                     add_inspect(tool), add_format(tool), add_parse(tool),
                                     add_calc(tool)};
    for (Command &command : add_operations(tool)) commands.push_back(std::move(command));
    std::vector<std::string> words = parser_arguments(argc, argv);
    const auto command_word =
        std::find_if(words.rbegin(), words.rend(),
                     [](const std::string &word) { return !word.starts_with('-'); });
    if (command_word != words.rend()) {
        std::vector<std::string> names(commands.size());
        std::transform(commands.begin(), commands.end(), names.begin(),
                       [](const Command &command) { return command.app->get_name(); });
        if (std::find(names.begin(), names.end(), *command_word) == names.end()) {
            const std::string meant = nearest_name(*command_word, names);
            report("unknown command " + in_quotes(*command_word) +
                   (meant.empty() ? "; --help lists the commands"
                                  : "; did you mean " + in_quotes(meant) + "?"));
            return 2;
        }
    }
    try {
        tool.parse(words);
        bool good = true;
        for (const Command &command : commands) {
            if (command.app->parsed()) good &= command.run(out);
        }
        return good ? 0 : 1;
    } catch (const CLI::ExtrasError &error) {
        report(shown_message(error.what()) + "; values that look like options go behind --");
        return 2;
    } catch (const CLI::ParseError &error) {
        std::ostringstream text, message;
        const int status = tool.exit(error, text, message);
        out.write(text.str());
        if (status == 0) return 0;
        report(shown_message(error.what()));
        return 2;
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
        return out.has_refused() ? 1 : 0;
    } catch (const MessagesClosed &) {
        return 1;
    } catch (const OutputFailed &failure) {
        report_last(std::string("standard output: ") + std::strerror(failure.error));
        return 1;
    } catch (const std::bad_alloc &) {
        report_last("out of memory");
        return 2;
    }
}
