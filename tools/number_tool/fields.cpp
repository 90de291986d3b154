#include "fields.h"

#include <algorithm>
#include <charconv>
#include <cstring>

#include "messages.h"

namespace number_tool {

Dialect Dialect::of_file(const std::string &name) const {
    if (is_by_name && name.ends_with(".csv")) return {',', true, false};
    return *this;
}

bool FieldList::parse(std::string_view text) {
    std::vector<std::pair<size_t, size_t>> ranges;
    const char *at = text.data();
    const char *const end = at + text.size();
    const auto number = [&](size_t &n) {
        const auto [behind, error] = std::from_chars(at, end, n);
        at = behind;
        return error == std::errc{} && n > 0;
    };
    for (;;) {
        size_t first, last;
        if (!number(first)) return false;
        last = first;
        if (at != end && *at == '-') {
            ++at;
            last = open_end;
            if (at != end && *at != ',' && (!number(last) || last < first)) return false;
        }
        ranges.emplace_back(first, last);
        if (at == end) break;
        if (*at++ != ',') return false;
    }
    std::sort(ranges.begin(), ranges.end());
    ranges_.clear();
    for (const auto &range : ranges) {
        if (ranges_.empty() || range.first > ranges_.back().second) {
            ranges_.push_back(range);
        } else {
            ranges_.back().second = std::max(ranges_.back().second, range.second);
        }
    }
    return true;
}

bool Fields::split(std::string_view line, std::string &reason) {
    raw.clear();
    const char *at = line.data();
    const char *const end = at + line.size();
    for (;;) {
        const char *const begin = at;
        if (dialect.is_csv && at != end && *at == '"') {
            for (++at;; ++at) {
                at = static_cast<const char *>(std::memchr(at, '"', static_cast<size_t>(end - at)));
                if (at == nullptr) {
                    reason = "quotation mark of field " + std::to_string(raw.size() + 1) +
                             " is not closed";
                    return false;
                }
                ++at;
                if (at == end || *at != '"') break;
            }
            if (at != end && *at != dialect.delimiter) {
                reason = "unexpected " + in_quotes({at, 1}) + " behind the quotes of field " +
                         std::to_string(raw.size() + 1);
                return false;
            }
        } else {
            const void *const found =
                at == end ? nullptr
                          : std::memchr(at, dialect.delimiter, static_cast<size_t>(end - at));
            at = found == nullptr ? end : static_cast<const char *>(found);
        }
        raw.emplace_back(begin, static_cast<size_t>(at - begin));
        if (at == end) return true;
        ++at;
    }
}

std::string_view Fields::value(size_t index, std::string &scratch) const {
    std::string_view field = raw[index];
    if (!dialect.is_csv || !field.starts_with('"')) return field;
    field = field.substr(1, field.size() - 2);
    if (field.find('"') == field.npos) return field;
    scratch.clear();
    for (size_t at = 0; at < field.size(); ++at) {
        scratch += field[at];
        at += field[at] == '"';
    }
    return scratch;
}

size_t CsvScanner::find(std::string_view bytes, size_t from) {
    for (size_t at = from; at < bytes.size(); ++at) {
        const char c = bytes[at];
        if (state_ == State::quoted) {
            at = bytes.find('"', at);
            if (at == bytes.npos) return at;
            state_ = State::quote_in_quoted;
        } else if (c == line_end_) {
            state_ = State::field_start;
            return at;
        } else if (c == delimiter_) {
            state_ = State::field_start;
        } else if (c == '"' && state_ != State::plain) {
            state_ = State::quoted;
        } else {
            state_ = State::plain;
        }
    }
    return bytes.npos;
}

bool needs_quotes(std::string_view text, const Dialect &dialect) {
    return text.find_first_of("\"\r\n") != text.npos || text.find(dialect.delimiter) != text.npos;
}

std::string in_csv_quotes(std::string_view text) {
    std::string quoted = "\"";
    for (const char c : text) {
        if (c == '"') quoted += c;
        quoted += c;
    }
    return quoted + '"';
}

}  // namespace number_tool
