#include "arguments.h"

#include <algorithm>
#include <numeric>
#include <utility>

#include "stream.h"

namespace number_tool {

namespace {

// A value's bytes in hex between two marks, which no option's name has.
constexpr char mark = '\1';

std::string word_of(std::string_view value) { return mark + hex_text(value) + mark; }

std::string bytes_of(std::string_view hex) {
    std::string bytes;
    for (size_t i = 0; i + 1 < hex.size(); i += 2) {
        bytes += static_cast<char>(std::stoi(std::string(hex.substr(i, 2)), nullptr, 16));
    }
    return bytes;
}

bool is_letter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

}  // namespace

std::vector<std::string> parser_arguments(int argc, char **argv) {
    std::vector<std::string> words;
    bool only_values = false, has_command = false;
    for (int i = 1; i < argc; ++i) {
        const std::string_view argument = argv[i];
        const bool is_short = argument.size() > 1 && argument[0] == '-' && is_letter(argument[1]);
        if (argument == "--" && !only_values) {
            only_values = true;
        } else if (argument.size() > 2 && argument.starts_with("--") && is_letter(argument[2]) &&
                   !only_values) {
            const size_t name = std::min(argument.find('='), argument.size());
            words.emplace_back(argument.substr(0, name));
            if (name < argument.size()) words.push_back(word_of(argument.substr(name + 1)));
        } else if (is_short && !only_values) {
            words.emplace_back(argument.substr(0, 2));
            if (argument.size() > 2) words.push_back(word_of(argument.substr(2)));
        } else if (!has_command && !only_values) {
            has_command = true;
            words.emplace_back(argument);
        } else {
            words.push_back(word_of(argument));
        }
    }
    std::reverse(words.begin(), words.end());
    return words;
}

std::string value_of(const std::string &word) {
    return bytes_of(std::string_view(word).substr(1, word.size() - 2));
}

std::vector<std::string> values_of(const std::vector<std::string> &words) {
    std::vector<std::string> values(words.size());
    std::transform(words.begin(), words.end(), values.begin(), value_of);
    return values;
}

std::string shown_message(const std::string &message) {
    std::string shown;
    for (size_t at = 0; at < message.size();) {
        const size_t begin = message.find(mark, at);
        shown += escaped(message.substr(at, begin - at));
        if (begin == message.npos) break;
        const size_t end = message.find(mark, begin + 1);
        shown += in_quotes(bytes_of(message.substr(begin + 1, end - begin - 1)));
        at = end == message.npos ? end : end + 1;
    }
    return shown;
}

std::string nearest_name(const std::string &name, const std::vector<std::string> &names) {
    // Levenshtein's distance, row by row.
    const auto distance = [&](const std::string &other) {
        std::vector<size_t> row(other.size() + 1);
        std::iota(row.begin(), row.end(), size_t{0});
        for (size_t i = 0; i < name.size(); ++i) {
            size_t diagonal = std::exchange(row[0], i + 1);
            for (size_t j = 0; j < other.size(); ++j) {
                const size_t changed = diagonal + (name[i] != other[j]);
                diagonal = row[j + 1];
                row[j + 1] = std::min({changed, row[j] + 1, diagonal + 1});
            }
        }
        return row.back();
    };
    std::string nearest;
    size_t least = std::min<size_t>(2, name.size() / 2) + 1;
    for (const std::string &other : names) {
        if (distance(other) < least) {
            least = distance(other);
            nearest = other;
        }
    }
    return nearest;
}

}  // namespace number_tool
