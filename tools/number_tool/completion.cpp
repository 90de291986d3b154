// Completion scripts.
#include <sstream>

#include "help.h"

namespace number_tool {

namespace {

std::string joined(const std::vector<std::string> &words) {
    std::string text;
    for (const std::string &word : words) text.append(text.empty() ? "" : " ").append(word);
    return text;
}

std::string names_of(const std::vector<Command> &commands) {
    std::string names;
    for (const Command &command : commands) {
        names.append(names.empty() ? "" : " ").append(command.app->get_name());
    }
    return names;
}

// Without what quotation marks of the shells would end at.
std::string in_shell_quotes(std::string text) {
    for (size_t at = 0; (at = text.find('\'', at)) != text.npos; at += 4)
        text.replace(at, 1, "'\\''");
    return "'" + text + "'";
}

std::vector<std::string> names_of(const OptionText &option) {
    if (option.short_name.empty()) return {option.long_name};
    return {option.short_name, option.long_name};
}

// What may stand behind the command but options.
std::string values_of(const Command &command, const std::string &names) {
    const std::string name = command.app->get_name();
    if (name == "help" || name == "man") return names;
    return name == "completion" ? "bash zsh fish" : "";
}

std::string bash(const std::vector<Command> &commands) {
    const std::string names = names_of(commands);
    std::ostringstream text;
    text << "_ocinumber() {\n"
            "    local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD-1]} words\n"
            "    if [[ $COMP_CWORD -eq 1 ]]; then\n"
            "        COMPREPLY=($(compgen -W '"
         << names
         << " --help --version' -- \"$word\"))\n"
            "        return\n"
            "    fi\n"
            "    case ${COMP_WORDS[1]}:$before in\n";
    for (const Command &command : commands) {
        const std::string name = command.app->get_name();
        std::string words = values_of(command, names);
        for (const OptionText &option : options_of(*command.app)) {
            words.append(" ").append(option.long_name);
            if (option.value.empty()) continue;
            for (const std::string &written : names_of(option)) {
                text << "        " << name << ":" << written << ") words='"
                     << joined(option.choices) << "' ;;\n";
            }
        }
        text << "        " << name << ":*) words='" << words << "' ;;\n";
    }
    text << "    esac\n"
            "    COMPREPLY=($(compgen -W \"$words\" -- \"$word\"))\n"
            "    [[ $word == -* || ${#COMPREPLY[@]} -gt 0 ]] ||\n"
            "        COMPREPLY=($(compgen -f -- \"$word\"))\n"
            "}\n"
            "complete -o filenames -F _ocinumber ocinumber\n";
    return text.str();
}

// In a description of zsh's.
std::string in_brackets(std::string text) {
    for (size_t at = 0; (at = text.find_first_of("[]:\\", at)) != text.npos; at += 2) {
        text.insert(at, 1, '\\');
    }
    return text;
}

std::string zsh_option(const OptionText &option, const std::string &written) {
    std::ostringstream text;
    text << "*" << written << "[" << in_brackets(option.description) << "]";
    if (!option.value.empty()) {
        text << ":" << in_brackets(option.value) << ":";
        if (!option.choices.empty()) {
            text << "(" << joined(option.choices) << ")";
        } else {
            text << (option.value == "FILE" ? "_files" : " ");
        }
    }
    return in_shell_quotes(text.str());
}

std::string zsh(const std::vector<Command> &commands) {
    const std::string names = names_of(commands);
    std::ostringstream text;
    text << "#compdef ocinumber\n"
            "_ocinumber() {\n"
            "    local -a commands\n"
            "    commands=(";
    for (const Command &command : commands) {
        text << "\n        "
             << in_shell_quotes(command.app->get_name() + ":" +
                                in_brackets(command.app->get_description()));
    }
    text << "\n    )\n"
            "    if (( CURRENT == 2 )); then\n"
            "        _describe command commands\n"
            "        _arguments '--help[Help]' '--version[Version]'\n"
            "        return\n"
            "    fi\n"
            "    local command=$words[2]\n"
            "    shift words\n"
            "    (( CURRENT-- ))\n"
            "    case $command in\n";
    for (const Command &command : commands) {
        text << "        " << command.app->get_name() << ")\n            _arguments";
        for (const OptionText &option : options_of(*command.app)) {
            for (const std::string &written : names_of(option)) {
                text << " \\\n                " << zsh_option(option, written);
            }
        }
        const std::string values = values_of(command, names);
        text << " \\\n                '"
             << (values.empty() ? "*:value:_files" : "1:value:(" + values + ")") << "' ;;\n";
    }
    text << "    esac\n}\n_ocinumber \"$@\"\n";
    return text.str();
}

std::string fish(const std::vector<Command> &commands) {
    const std::string names = names_of(commands);
    std::ostringstream text;
    for (const Command &command : commands) {
        const std::string name = command.app->get_name();
        const std::string is_command =
            "complete -c ocinumber -n '__fish_seen_subcommand_from " + name + "'";
        text << "complete -c ocinumber -f -n 'not __fish_seen_subcommand_from " << names << "' -a "
             << name << " -d " << in_shell_quotes(command.app->get_description()) << "\n";
        for (const OptionText &option : options_of(*command.app)) {
            text << is_command << " -l " << option.long_name.substr(2);
            if (!option.short_name.empty()) text << " -s " << option.short_name.substr(1);
            if (!option.value.empty()) text << " -r";
            if (!option.choices.empty()) text << " -f -a '" << joined(option.choices) << "'";
            text << " -d " << in_shell_quotes(option.description) << "\n";
        }
        const std::string values = values_of(command, names);
        if (!values.empty()) text << is_command << " -f -a '" << values << "'\n";
    }
    return text.str();
}

}  // namespace

std::string completion(const std::string &shell, const std::vector<Command> &commands) {
    if (shell == "bash") return bash(commands);
    if (shell == "zsh") return zsh(commands);
    if (shell == "fish") return fish(commands);
    return {};
}

}  // namespace number_tool
