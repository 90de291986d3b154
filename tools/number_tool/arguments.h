// The command line as the option parser sees it. Every value, of an option or alone, stands
// behind a word that means nothing to the parser, so that it is taken as it is.
#pragma once

#include <string>
#include <vector>

namespace number_tool {

// The arguments for the parser, the first last. Options are "--name" and "-x", with a value behind
// them, "=" or nothing between; the first other word is the command; all else is a value, and so is
// all behind "--".
std::vector<std::string> parser_arguments(int argc, char **argv);

// The value that a word of the parser's stands for.
std::string value_of(const std::string &word);
std::vector<std::string> values_of(const std::vector<std::string> &words);

// A message of the parser's with the values in place of the words, fit to be shown.
std::string shown_message(const std::string &message);

// The one of the names that was meant, when it is clear; else empty.
std::string nearest_name(const std::string &name, const std::vector<std::string> &names);

}  // namespace number_tool
