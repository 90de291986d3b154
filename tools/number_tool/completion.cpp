// Completion scripts.
#include "help.h"

namespace number_tool {

namespace {

std::string joined(const std::vector<std::string> &words) {
    std::string text;
    for (const std::string &word : words) text += (text.empty() ? "" : " ") + word;
    return text;
}

std::string names_of(const std::vector<Command> &commands) {
    std::vector<std::string> names;
    for (const Command &command : commands) names.push_back(command.app->get_name());
    return joined(names);
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

bool is_command_of_commands(const Command &command) {
    return command.app->get_name() == "help" || command.app->get_name() == "man";
}

std::string bash(const std::vector<Command> &commands) {
    std::string text =
        "_ocinumber() {\n"
        "    local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD-1]} words\n"
        "    if [[ $COMP_CWORD -eq 1 ]]; then\n"
        "        COMPREPLY=($(compgen -W '" +
        names_of(commands) +
        " --help --version' -- \"$word\"))\n"
        "        return\n"
        "    fi\n"
        "    case ${COMP_WORDS[1]}:$before in\n";
    for (const Command &command : commands) {
        const std::string name = command.app->get_name();
        for (const OptionText &option : options_of(*command.app)) {
            if (option.value.empty()) continue;
            for (const std::string &written : names_of(option)) {
                text += "        " + name + ":" + written + ") words='" + joined(option.choices) +
                        "' ;;\n";
            }
        }
        std::vector<std::string> words;
        for (const OptionText &option : options_of(*command.app)) words.push_back(option.long_name);
        std::string values;
        if (is_command_of_commands(command)) values = " " + names_of(commands);
        if (name == "completion") values = " bash zsh fish";
        text += "        " + name + ":*) words='" + joined(words) + values + "' ;;\n";
    }
    return text +
           "    esac\n"
           "    COMPREPLY=($(compgen -W \"$words\" -- \"$word\"))\n"
           "    [[ $word == -* || ${#COMPREPLY[@]} -gt 0 ]] || COMPREPLY=($(compgen -f -- "
           "\"$word\"))\n"
           "}\n"
           "complete -o filenames -F _ocinumber ocinumber\n";
}

// In a description of zsh's.
std::string in_brackets(std::string text) {
    for (size_t at = 0; (at = text.find_first_of("[]:\\", at)) != text.npos; at += 2) {
        text.insert(at, 1, '\\');
    }
    return text;
}

std::string zsh(const std::vector<Command> &commands) {
    std::string text =
        "#compdef ocinumber\n"
        "_ocinumber() {\n"
        "    local -a commands\n"
        "    commands=(";
    for (const Command &command : commands) {
        text += "\n        " + in_shell_quotes(command.app->get_name() + ":" +
                                               in_brackets(command.app->get_description()));
    }
    text +=
        "\n    )\n"
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
        const std::string name = command.app->get_name();
        text += "        " + name + ")\n            _arguments";
        for (const OptionText &option : options_of(*command.app)) {
            for (const std::string &written : names_of(option)) {
                std::string line = "*" + written + "[" + in_brackets(option.description) + "]";
                if (!option.value.empty()) {
                    line += ":" + in_brackets(option.value) + ":" +
                            (option.choices.empty() ? option.value == "FILE" ? "_files" : " "
                                                    : "(" + joined(option.choices) + ")");
                }
                text += " \\\n                " + in_shell_quotes(line);
            }
        }
        std::string values = "*:value:_files";
        if (is_command_of_commands(command)) values = "1:command:(" + names_of(commands) + ")";
        if (name == "completion") values = "1:shell:(bash zsh fish)";
        text += " \\\n                " + in_shell_quotes(values) + " ;;\n";
    }
    return text + "    esac\n}\n_ocinumber \"$@\"\n";
}

std::string fish(const std::vector<Command> &commands) {
    const std::string all = names_of(commands);
    std::string text;
    for (const Command &command : commands) {
        const std::string name = command.app->get_name();
        const std::string is_command =
            "complete -c ocinumber -n '__fish_seen_subcommand_from " + name + "'";
        text += "complete -c ocinumber -f -n 'not __fish_seen_subcommand_from " + all + "' -a " +
                name + " -d " + in_shell_quotes(command.app->get_description()) + "\n";
        for (const OptionText &option : options_of(*command.app)) {
            text += is_command + " -l " + option.long_name.substr(2);
            if (!option.short_name.empty()) text += " -s " + option.short_name.substr(1);
            if (!option.value.empty()) text += " -r";
            if (!option.choices.empty()) text += " -f -a '" + joined(option.choices) + "'";
            text += " -d " + in_shell_quotes(option.description) + "\n";
        }
        if (is_command_of_commands(command)) text += is_command + " -f -a '" + all + "'\n";
        if (name == "completion") text += is_command + " -f -a 'bash zsh fish'\n";
    }
    return text;
}

}  // namespace

std::string completion(const std::string &shell, const std::vector<Command> &commands) {
    if (shell == "bash") return bash(commands);
    if (shell == "zsh") return zsh(commands);
    if (shell == "fish") return fish(commands);
    return {};
}

}  // namespace number_tool
