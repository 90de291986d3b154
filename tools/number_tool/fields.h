// Lines as columns: fields between delimiters, or CSV with quotes.
#pragma once

#include <limits>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace number_tool {

struct Dialect {
    char delimiter = '\t';
    bool is_csv = false;
    // Nothing was said of it: a file whose name ends in ".csv" is CSV with commas.
    bool is_by_name = true;

    Dialect of_file(const std::string &name) const;
};

// Field numbers, from 1, in ranges as "2", "1,3-5" and "4-" name them.
class FieldList {
public:
    static constexpr size_t open_end = std::numeric_limits<size_t>::max();

    // Returns false for any other text.
    bool parse(std::string_view text);
    bool empty() const { return ranges_.empty(); }
    const std::vector<std::pair<size_t, size_t>> &ranges() const { return ranges_; }

private:
    std::vector<std::pair<size_t, size_t>> ranges_;  // in order, apart from one another
};

// The fields of one line as they stand there, quotes included.
struct Fields {
    Dialect dialect;
    std::vector<std::string_view> raw;

    // Returns false, with the reason, for quotes that do not match.
    bool split(std::string_view line, std::string &reason);
    // Without quotes; `scratch` holds what does not stand so in the line.
    std::string_view value(size_t index, std::string &scratch) const;
};

// Finds the line ends of CSV, which stand outside quotes. Bytes are handed over in turn.
class CsvScanner {
public:
    CsvScanner(char delimiter, char line_end) : delimiter_(delimiter), line_end_(line_end) {}
    // The index of the next line end at `from` or behind it; npos when `bytes` has none.
    size_t find(std::string_view bytes, size_t from);

private:
    enum class State { field_start, plain, quoted, quote_in_quoted };
    char delimiter_, line_end_;
    State state_ = State::field_start;
};

// Whether a field with this text needs quotes in CSV, and the text in them.
bool needs_quotes(std::string_view text, const Dialect &dialect);
std::string in_csv_quotes(std::string_view text);

}  // namespace number_tool
