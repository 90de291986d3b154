#include "stream.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "oci.h"

namespace number_tool {

namespace {

constexpr size_t block = size_t{1} << 16;
constexpr size_t max_quoted = 60;

// After a read or write that failed: waits when the descriptor is not ready.
// Returns whether to try again.
bool try_again(int fd, short events) {
    if (errno == EINTR) return true;
    if (errno != EAGAIN) return false;
    pollfd ready{fd, events, 0};
    return poll(&ready, 1, -1) >= 0 || errno == EINTR;
}

// One value of a file.
struct Item {
    std::string_view value;
    size_t number;     // of the line or record, from 1
    size_t offset;     // of its first byte in the file
    bool is_too_long;  // a line of which `value` holds only the start
};

// Cuts a descriptor's bytes into lines or records.
class Reader {
public:
    // The output is flushed before each read that may have to wait.
    Reader(int fd, Framing framing, Output &out)
        : fd_(fd), framing_(framing), out_(out), buffer_(new char[max_line + block]) {
        struct stat status {};
        waits_ = fstat(fd, &status) != 0 || !S_ISREG(status.st_mode);
    }

    // False at the end, and at a read error, whose errno error() then gives.
    bool next(Item &item) {
        item.is_too_long = false;
        item.number = ++number_;
        item.offset = offset_;
        return framing_ == Framing::lines ? next_line(item) : next_record(item);
    }
    int error() const { return error_; }

private:
    bool next_line(Item &item) {
        size_t scanned = 0;
        for (;;) {
            const void *feed = std::memchr(begin() + scanned, '\n', size() - scanned);
            if (feed != nullptr) {
                const size_t length =
                    static_cast<size_t>(static_cast<const char *>(feed) - begin());
                if (length > max_line) return too_long(item);
                item.value = {begin(), length};
                if (item.value.ends_with('\r')) item.value.remove_suffix(1);
                consume(length + 1);
                return true;
            }
            if (size() > max_line) return too_long(item);
            scanned = size();
            if (!fill()) return error_ == 0 && take_rest(item);
        }
    }

    bool next_record(Item &item) {
        while (size() < OCI_NUMBER_SIZE) {
            if (!fill()) return error_ == 0 && take_rest(item);
        }
        item.value = {begin(), OCI_NUMBER_SIZE};
        consume(OCI_NUMBER_SIZE);
        return true;
    }

    // What stands behind the last line end or whole record.
    bool take_rest(Item &item) {
        item.value = {begin(), size()};
        consume(size());
        return !item.value.empty();
    }

    // Keeps the start of the line for the message and drops the rest of it.
    bool too_long(Item &item) {
        std::memcpy(start_, begin(), sizeof start_);
        item.value = {start_, sizeof start_};
        item.is_too_long = true;
        for (;;) {
            const void *feed = std::memchr(begin(), '\n', size());
            if (feed != nullptr) {
                consume(static_cast<size_t>(static_cast<const char *>(feed) - begin()) + 1);
                return true;
            }
            consume(size());
            if (!fill()) return true;
        }
    }

    // Reads a block behind the bytes at hand; false at the end or an error. The
    // bytes move to the front only when no block fits behind them, which is at
    // most once for each max_line bytes.
    bool fill() {
        if (end_of_file_) return false;
        if (begin_ == end_) {
            begin_ = end_ = 0;
        } else if (end_ + block > max_line + block) {
            std::memmove(buffer_.get(), begin(), size());
            end_ -= begin_;
            begin_ = 0;
        }
        if (waits_) out_.flush();
        ssize_t got;
        do {
            got = read(fd_, buffer_.get() + end_, block);
        } while (got < 0 && try_again(fd_, POLLIN));
        if (got <= 0) {
            error_ = got < 0 ? errno : 0;
            end_of_file_ = true;
            return false;
        }
        end_ += static_cast<size_t>(got);
        return true;
    }

    const char *begin() const { return buffer_.get() + begin_; }
    size_t size() const { return end_ - begin_; }
    void consume(size_t n) {
        begin_ += n;
        offset_ += n;
    }

    int fd_;
    Framing framing_;
    Output &out_;
    bool waits_;
    bool end_of_file_ = false;
    int error_ = 0;
    std::unique_ptr<char[]> buffer_;
    size_t begin_ = 0, end_ = 0;  // the bytes at hand
    size_t number_ = 0;
    size_t offset_ = 0;
    char start_[max_quoted + 1];
};

struct Run {
    Framing framing;
    const Operation &operation;
    Output &out;
    std::string reason;

    // `place` names where the value stands, when it is refused.
    template <typename Place>
    bool convert(std::string_view value, bool is_too_long, Place place) {
        reason.clear();
        if (!is_too_long) {
            char *const end = operation(value, out.room(), reason);
            if (end != nullptr) {
                out.take(end);
                return true;
            }
        } else {
            reason = "line is longer than " + std::to_string(max_line) + " bytes";
        }
        out.flush_to_terminal();
        out.note_refusal();
        report(place() + (framing == Framing::lines ? in_quotes(value) : hex_text(value)) + ": " +
               reason);
        return false;
    }

    bool convert_file(const std::string &name) {
        const bool is_standard_input = name == "-";
        const auto fail = [&](const char *error) {
            out.flush_to_terminal();
            out.note_refusal();
            report(escaped(name) + ": " + error);
            return false;
        };
        const int fd = is_standard_input ? STDIN_FILENO : open(name.c_str(), O_RDONLY | O_CLOEXEC);
        if (fd < 0) return fail(std::strerror(errno));
        if (out.is_same_file(fd)) {
            if (!is_standard_input) ::close(fd);
            return fail("the input is the output");
        }
        bool good = true;
        Reader reader(fd, framing, out);
        for (Item item; reader.next(item);) {
            good &= convert(item.value, item.is_too_long, [&] {
                const std::string number = std::to_string(item.number);
                if (framing == Framing::lines) return escaped(name) + ":" + number + ": ";
                return escaped(name) + ": record " + number + " at byte " +
                       std::to_string(item.offset) + ": ";
            });
        }
        if (reader.error() != 0) good = fail(std::strerror(reader.error()));
        if (!is_standard_input) ::close(fd);
        return good;
    }
};

}  // namespace

Output::Output()
    : terminal_(isatty(STDOUT_FILENO) != 0),
      buffer_(new char[block + max_result]),
      end_(buffer_.get()) {}

char *Output::room() {
    if (end_ >= buffer_.get() + block) flush();
    return end_;
}

void Output::write(std::string_view text) {
    while (!text.empty()) {
        const size_t n = std::min(text.size(), max_result);
        char *const out = room();
        std::memcpy(out, text.data(), n);
        take(out + n);
        text.remove_prefix(n);
    }
}

void Output::flush() {
    const char *from = buffer_.get();
    const char *const end = end_;
    end_ = buffer_.get();
    while (from != end) {
        const ssize_t written = ::write(STDOUT_FILENO, from, static_cast<size_t>(end - from));
        if (written >= 0) {
            from += written;
        } else if (!try_again(STDOUT_FILENO, POLLOUT)) {
            if (errno == EPIPE) throw OutputClosed{};
            throw OutputFailed{errno};
        }
    }
}

void Output::close() {
    flush();
    // A descriptor that was never open is no error when nothing was written.
    if (::close(STDOUT_FILENO) != 0 && errno != EBADF && errno != EINTR) throw OutputFailed{errno};
}

bool for_each_value(const Inputs &inputs, Framing framing, const Operation &operation,
                    Output &out) {
    Run run{framing, operation, out, {}};
    bool good = true;
    for (size_t i = 0; i < inputs.values.size(); ++i) {
        good &= run.convert(inputs.values[i], false,
                            [&] { return "argument " + std::to_string(i + 1) + ": "; });
    }
    for (const std::string &file : inputs.files) good &= run.convert_file(file);
    if (inputs.values.empty() && inputs.files.empty()) good &= run.convert_file("-");
    return good;
}

bool Output::is_same_file(int fd) const {
    struct stat in {
    }, out{};
    return fstat(fd, &in) == 0 && fstat(STDOUT_FILENO, &out) == 0 && S_ISREG(in.st_mode) &&
           in.st_dev == out.st_dev && in.st_ino == out.st_ino;
}

void report(std::string_view text) {
    std::string line = "ocinumber: ";
    line += text;
    line += '\n';
    for (std::string_view rest = line; !rest.empty();) {
        const ssize_t written = ::write(STDERR_FILENO, rest.data(), rest.size());
        if (written >= 0) {
            rest.remove_prefix(static_cast<size_t>(written));
        } else if (!try_again(STDERR_FILENO, POLLOUT)) {
            if (errno == EPIPE) throw MessagesClosed{};
            // Nothing can be said about a message that cannot be written.
            return;
        }
    }
}

void report_last(std::string_view text) {
    try {
        report(text);
    } catch (const MessagesClosed &) {
    }
}

static bool printable(char c) { return c >= ' ' && c <= '~'; }

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
