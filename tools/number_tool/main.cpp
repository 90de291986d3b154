// ocinumber: the number library on the command line.
//
// Exit status: 0 all went well, 1 a value, file or write failed, 2 wrong usage or no memory.
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <new>

#include "arguments.h"
#include "commands.h"
#include "descriptor.h"
#include "help.h"
#include "messages.h"
#include "oci.h"

namespace number_tool {

namespace {

int refuse_command(const std::string &name, const std::vector<Command> &commands) {
    std::vector<std::string> names;
    names.reserve(commands.size());
    for (const Command &command : commands) names.push_back(command.app->get_name());
    const std::string meant = nearest_name(name, names);
    report("unknown command " + in_quotes(name) +
           (meant.empty() ? "; --help lists the commands"
                          : "; did you mean " + in_quotes(meant) + "?"));
    return 2;
}

int run(int argc, char **argv, Output &out) {
    CLI::App tool("", "ocinumber");
    tool.set_version_flag("--version", "ocinumber " OCI_NUMBER_VERSION);
    tool.set_help_flag("-h,--help", "Tell what the command does");
    std::vector<Command> commands = add_conversions(tool);
    for (const auto add : {add_inspect, add_format, add_parse, add_calc, add_stats}) {
        commands.push_back(add(tool));
    }
    for (Command &command : add_operations(tool)) commands.push_back(std::move(command));
    for (Command &command : add_help(tool, commands)) commands.push_back(std::move(command));

    std::vector<std::string> words = parser_arguments(argc, argv);
    const auto name = std::find_if(words.rbegin(), words.rend(),
                                   [](const std::string &word) { return !word.starts_with('-'); });
    const auto command = std::find_if(commands.begin(), commands.end(), [&](const Command &known) {
        return name != words.rend() && known.app->get_name() == *name;
    });
    if (name != words.rend() && command == commands.end()) return refuse_command(*name, commands);
    try {
        tool.parse(words);
        if (command == commands.end()) throw CLI::RequiredError("a command");
        return command->run(out);
    } catch (const CLI::CallForHelp &) {
        out.write(command == commands.end() ? tool_help(commands) : command_help(*command));
        return 0;
    } catch (const CLI::CallForVersion &version) {
        out.write(std::string(version.what()) + "\n");
        return 0;
    } catch (const CLI::ExtrasError &error) {
        report(shown_message(error.what()) + "; values that look like options go behind --");
        return 2;
    } catch (const CLI::ParseError &error) {
        report(shown_message(error.what()));
        return 2;
    }
}

// Without an allocation of its own.
[[noreturn]] void end_without_memory() {
    write_all(STDERR_FILENO, "ocinumber: out of memory\n");
    _exit(2);
}

// The parser and the language's library call what may throw where no exception comes through.
[[noreturn]] void end_by_exception() {
    const std::exception_ptr exception = std::current_exception();
    try {
        if (exception) std::rethrow_exception(exception);
    } catch (const std::bad_alloc &) {
        end_without_memory();
    } catch (...) {
    }
    std::abort();
}

}  // namespace

}  // namespace number_tool

int main(int argc, char **argv) {
    using namespace number_tool;
    // A closed pipe and a file that may not grow show as the write's error.
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    std::set_terminate(end_by_exception);
    try {
        Output out;
        const int status = run(argc, argv, out);
        out.close();
        return status;
    } catch (const OutputClosed &closed) {
        return closed.status;
    } catch (const MessagesClosed &) {
        return 1;
    } catch (const OutputFailed &failure) {
        report_last(std::string("standard output: ") + std::strerror(failure.error));
        return 1;
    } catch (const std::bad_alloc &) {
        end_without_memory();
    }
}
