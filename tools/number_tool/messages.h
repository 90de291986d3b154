// Messages on standard error, and how they show values.
#pragma once

#include <string>
#include <string_view>

namespace number_tool {

// Nobody reads standard error any more.
struct MessagesClosed {};

// Writes "ocinumber: " and the text as one line on standard error, bytes other than printable
// ASCII as \xHH. Throws MessagesClosed.
void report(std::string_view text);

// The same for a last message, of which nothing can be said when it cannot be written.
void report_last(std::string_view text);

// Shows `text` on the terminal's last line until the next message or an empty text.
void show_progress(const std::string &text);

// The value in quotation marks as messages show it: cut when long, with bytes
// other than printable ASCII as \xHH.
std::string in_quotes(std::string_view value);

// The text with bytes other than printable ASCII as \xHH.
std::string escaped(std::string_view text);

// The bytes as upper-case hex digits.
std::string hex_text(std::string_view bytes);

// What a message shows of a long value.
inline constexpr size_t max_quoted = 60;

}  // namespace number_tool
