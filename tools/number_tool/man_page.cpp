// Manual pages.
#include "help.h"
#include "oci.h"

namespace number_tool {

namespace {

// As roff shows it letter for letter.
std::string roff(const std::string &text) {
    std::string out;
    bool at_line_start = true;
    for (const char c : text) {
        if (at_line_start && (c == '.' || c == '\'')) out += "\\&";
        at_line_start = c == '\n';
        if (c == '\\') {
            out += "\\e";
        } else if (c == '-') {
            out += "\\-";
        } else if (c == '\'') {
            out += "\\(aq";
        } else if (c == '^') {
            out += "\\(ha";
        } else if (c == '~') {
            out += "\\(ti";
        } else {
            out += c;
        }
    }
    return out;
}

std::string paragraphs(const std::string &text) {
    std::string out = roff(text);
    for (size_t at; (at = out.find("\n\n")) != out.npos;) out.replace(at, 2, "\n.PP\n");
    return out + '\n';
}

std::string upper_case(std::string text) {
    for (char &c : text) c = c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
    return text;
}

std::string head(const std::string &name, const std::string &description) {
    return ".TH " + name + " 1 \"\" \"ocinumber " OCI_NUMBER_VERSION "\" \"\"\n.SH NAME\n" +
           roff(name) + " \\- " + roff(description) + "\n.SH SYNOPSIS\n";
}

constexpr const char *statuses =
    ".SH EXIT STATUS\n.TP\n0\nall went well\n.TP\n1\na value, file or write failed\n"
    ".TP\n2\nwrong usage or no memory\n";

std::string page_name(const Command &command) { return "ocinumber-" + command.app->get_name(); }

}  // namespace

std::string tool_page(const std::vector<Command> &commands) {
    std::string text = head("ocinumber", "decimal text and base-100 numbers");
    text += ".B ocinumber\nCOMMAND [OPTION]... [VALUE]...\n.SH COMMANDS\n";
    for (const Command &command : commands) {
        text += ".TP\n.BR " + roff(page_name(command)) + " (1)\n" +
                roff(command.app->get_description()) + '\n';
    }
    return text + statuses;
}

std::string command_page(const Command &command) {
    const std::string name = page_name(command);
    std::string text = head(name, command.app->get_description());
    text += ".B ocinumber " + roff(command.app->get_name()) + "\n[OPTION]... " +
            roff(command.values) + '\n';
    if (!command.details.empty()) text += ".SH DESCRIPTION\n" + paragraphs(command.details);
    std::string group;
    for (const OptionText &option : options_of(*command.app)) {
        if (option.group != group) text += ".SH " + upper_case(option.group) + "\n";
        group = option.group;
        text += ".TP\n\\fB";
        if (!option.short_name.empty()) text += roff(option.short_name) + "\\fR, \\fB";
        text += roff(option.long_name) + "\\fR";
        if (!option.value.empty()) text += " \\fI" + roff(option.value) + "\\fR";
        text += '\n' + roff(option.description) + '\n';
    }
    if (!command.examples.empty()) {
        text += ".SH EXAMPLES\n.nf\n" + roff(command.examples) + "\n.fi\n";
    }
    return text + statuses + ".SH SEE ALSO\n.BR ocinumber (1)\n";
}

}  // namespace number_tool
