#include "messages.h"

#include <unistd.h>

#include <cerrno>

#include "descriptor.h"

namespace number_tool {

namespace {

bool shows_progress = false;

bool printable(char c) { return c >= ' ' && c <= '~'; }

void write_messages(std::string_view text) {
    if (const int error = write_all(STDERR_FILENO, text); error == EPIPE) throw MessagesClosed{};
    // Nothing can be said about a message that cannot be written otherwise.
}

}  // namespace

void report(std::string_view text) {
    show_progress({});
    write_messages("ocinumber: " + escaped(text) + "\n");
}

void report_last(std::string_view text) {
    try {
        report(text);
    } catch (const MessagesClosed &) {
    }
}

void show_progress(const std::string &text) {
    if (text.empty() && !shows_progress) return;
    shows_progress = !text.empty();
    // The cursor stays at the start, where a message or the shell goes on.
    write_messages("\r\x1b[K" + text + (text.empty() ? "" : "\r"));
}

std::string escaped(std::string_view text) {
    std::string shown;
    for (const char c : text) shown += printable(c) ? std::string(1, c) : "\\x" + hex_text({&c, 1});
    return shown;
}

std::string in_quotes(std::string_view value) {
    return '"' + escaped(value.substr(0, max_quoted)) + '"' +
           (value.size() > max_quoted ? "..." : "");
}

std::string hex_text(std::string_view bytes) {
    std::string text;
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        text += "0123456789ABCDEF"[byte >> 4];
        text += "0123456789ABCDEF"[byte & 15];
    }
    return text;
}

}  // namespace number_tool
