// The stream loop that every command runs on: values come in from arguments,
// files or standard input, an operation turns each into a result or refuses it,
// and results go to standard output in blocks. Memory is constant.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace number_tool {

// A line longer than this is refused without being held in memory.
inline constexpr size_t max_line = size_t{1} << 20;
// The longest result of one value.
inline constexpr size_t max_result = 8192;

// How values follow one another in a file.
enum class Framing {
    lines,    // ended by a line feed, or a carriage return and line feed
    records,  // 22 bytes each
};

// Where the values of a command come from: arguments, then files ("-" is
// standard input); standard input when there are neither.
struct Inputs {
    std::vector<std::string> values;
    std::vector<std::string> files;
};

// Converts one value: writes its result, line end included and at most
// max_result bytes, at `out` and returns the result's end. Returns nullptr to
// refuse the value, with what is wrong with it in `reason`.
using Operation = std::function<char *(std::string_view value, char *out, std::string &reason)>;

// Nobody reads standard output any more.
struct OutputClosed {};
// Nobody reads the messages any more.
struct MessagesClosed {};
// Standard output cannot be written.
struct OutputFailed {
    int error;
};

// Standard output, written in large blocks.
class Output {
public:
    Output();
    // At least max_result bytes to write to; flushes when it must.
    char *room();
    // Takes what was written at room(), up to `end`.
    void take(char *end) { end_ = end; }
    void write(std::string_view text);
    void flush();
    // Flushes and closes, so that late write errors are seen too.
    void close();
    // Before a message, so that results and messages keep their order there.
    void flush_to_terminal() {
        if (terminal_) flush();
    }

    // Whether a value or file was refused so far.
    bool has_refused() const { return has_refused_; }
    void note_refusal() { has_refused_ = true; }
    // Whether the open descriptor is the file that the output goes to.
    bool is_same_file(int fd) const;

private:
    bool terminal_;
    bool has_refused_ = false;
    std::unique_ptr<char[]> buffer_;
    char *end_;
};

// Runs `operation` over all inputs. What is refused or cannot be read is named
// on standard error, and the rest goes on. Returns true when all went well.
// Throws OutputClosed and OutputFailed.
bool for_each_value(const Inputs &inputs, Framing framing, const Operation &operation, Output &out);

// Writes "ocinumber: " and the text as one line on standard error. Throws MessagesClosed.
void report(std::string_view text);
// The same at the end, when it does not matter any more whether somebody reads it.
void report_last(std::string_view text);

// The text with bytes other than printable ASCII as \xHH.
std::string escaped(std::string_view text);

// The value in quotation marks as messages show it: cut when long, with bytes
// other than printable ASCII as \xHH.
std::string in_quotes(std::string_view value);

// The bytes as upper-case hex digits.
std::string hex_text(std::string_view bytes);

}  // namespace number_tool
