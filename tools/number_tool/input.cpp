#include "input.h"

#include <fcntl.h>

#include <algorithm>
#include <cstring>
#include <utility>

#include "descriptor.h"
#include "messages.h"
#include "oci.h"

namespace number_tool {

namespace {

char end_byte(Framing framing) { return framing == Framing::zeros ? '\0' : '\n'; }

// Where a block's bytes start in its room. A load waits for the stores before it to addresses that
// are equal but for whole pages of 4096 bytes, and results start near the start of such a page.
constexpr size_t half_page = 2048;

// 0 when one of them is no regular file.
size_t total_size(const std::vector<std::string> &files) {
    size_t total = 0;
    for (const std::string &file : files) {
        struct stat status {};
        const int failed = file == "-" ? fstat(STDIN_FILENO, &status) : stat(file.c_str(), &status);
        if (failed != 0 || !S_ISREG(status.st_mode)) return 0;
        total += static_cast<size_t>(status.st_size);
    }
    return total;
}

}  // namespace

Input::Input(const Inputs &inputs, Framing framing, std::optional<Dialect> dialect,
             size_t block_size, const Output &out, int wake)
    : values_(inputs.values),
      files_(inputs.files),
      framing_(framing),
      given_dialect_(dialect),
      block_size_(block_size),
      out_(out),
      wake_(wake),
      scanner_('\0', '\0') {
    if (values_.empty() && files_.empty()) files_.emplace_back("-");
    bytes_in_all_ = total_size(files_);
}

Input::~Input() { close_file(); }

bool Input::next(Block &block) {
    if (!block.room) block.room.reset(new char[half_page + max_line + 2 * block_size_]);
    block.number = next_block_;
    block.file = nullptr;
    block.starts_file = block.is_too_long = false;
    block.framing = framing_;
    block.bytes = {};
    block.failure.clear();
    while (!next_values(block)) {
        if (fd_ < 0 && next_file_ == files_.size()) return false;
        if (fd_ < 0 && !open_file(block)) break;
        block.file = &files_[next_file_ - 1];
        block.is_of_first_file = next_file_ == 1;
        block.dialect = dialect_;
        if (fill(block)) break;
        close_file();
    }
    ++next_block_;
    return true;
}

// Arguments hold no zero bytes, so they go as records that end with one.
bool Input::next_values(Block &block) {
    if (next_value_ == values_.size()) return false;
    block.framing = Framing::zeros;
    block.dialect = given_dialect_.value_or(Dialect{});
    size_t size = 0;
    for (; next_value_ < values_.size(); ++next_value_) {
        const std::string &value = values_[next_value_];
        if (size > 0 && size + value.size() > max_line) break;
        if (value.size() > max_line) {
            block.bytes = std::string_view(value).substr(0, max_quoted + 1);
            block.is_too_long = true;
            ++next_value_;
            return true;
        }
        std::memcpy(block.room.get() + size, value.c_str(), value.size() + 1);
        size += value.size() + 1;
    }
    block.bytes = {block.room.get(), size};
    return true;
}

bool Input::open_file(Block &block) {
    const std::string &name = files_[next_file_++];
    block.file = &name;
    fd_ = name == "-" ? STDIN_FILENO : open(name.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd_ < 0) {
        block.failure = std::strerror(errno);
        return false;
    }
    if (out_.is_same_file(fd_)) {
        block.failure = "the input is the output";
        close_file();
        return false;
    }
    struct stat status {};
    waits_ = fstat(fd_, &status) != 0 || !S_ISREG(status.st_mode);
    is_at_start_ = true;
    is_at_end_ = false;
    dialect_ = given_dialect_.value_or(Dialect{}).of_file(name);
    scanner_ = CsvScanner(dialect_.delimiter, end_byte(framing_));
    return true;
}

// Reads until there is a whole record; false at the end of the file.
bool Input::fill(Block &block) {
    char *const room = block.room.get() + half_page;
    size_t size = rest_.size(), scanned = 0;
    std::memcpy(room, rest_.data(), size);
    rest_.clear();
    for (;;) {
        const size_t whole = find_last_end({room, size}, scanned);
        if (whole > 0) {
            rest_.assign(room + whole, size - whole);
            block.bytes = {room, whole};
            break;
        }
        scanned = size;
        if (size > max_line) {
            drop_line(block, room);
            break;
        }
        const ssize_t got = is_at_end_ ? 0 : read_some(room + size);
        if (got < 0) {
            block.failure = std::strerror(errno);
            is_at_end_ = true;
            return true;
        }
        if (got == 0) {
            is_at_end_ = true;
            block.bytes = {room, size};
            if (size == 0) return false;
            break;
        }
        size += static_cast<size_t>(got);
    }
    block.starts_file = std::exchange(is_at_start_, false);
    return true;
}

// Of a line that is too long the start, which stands there, goes into a message.
void Input::drop_line(Block &block, char *start) {
    block.is_too_long = true;
    block.bytes = {start, max_quoted + 1};
    char *const room = start + max_quoted + 1;
    for (;;) {
        const ssize_t got = read_some(room);
        if (got <= 0) {
            is_at_end_ = got == 0;
            return;
        }
        const auto size = static_cast<size_t>(got);
        const void *const end = std::memchr(room, end_byte(framing_), size);
        if (end == nullptr) continue;
        const char *const behind = static_cast<const char *>(end) + 1;
        rest_.assign(behind, size - static_cast<size_t>(behind - room));
        scanner_ = CsvScanner(dialect_.delimiter, end_byte(framing_));
        return;
    }
}

// How many bytes whole records have; what stands before `from` holds no end.
size_t Input::find_last_end(std::string_view bytes, size_t from) {
    if (framing_ == Framing::records) return bytes.size() - bytes.size() % OCI_NUMBER_SIZE;
    if (!given_dialect_ || !dialect_.is_csv) {
        const void *const end =
            memrchr(bytes.data() + from, end_byte(framing_), bytes.size() - from);
        return end == nullptr
                   ? 0
                   : static_cast<size_t>(static_cast<const char *>(end) - bytes.data()) + 1;
    }
    size_t whole = 0;
    while ((from = scanner_.find(bytes, from)) != bytes.npos) whole = ++from;
    // What stands behind is scanned again as the start of the next block.
    if (whole > 0) scanner_ = CsvScanner(dialect_.delimiter, end_byte(framing_));
    return whole;
}

ssize_t Input::read_some(char *to) {
    ssize_t got;
    do {
        if (waits_ && wake_ >= 0) {
            pollfd ready[] = {{fd_, POLLIN, 0}, {wake_, POLLIN, 0}};
            if (poll(ready, 2, -1) > 0 && ready[1].revents != 0) return 0;
        }
        got = read(fd_, to, block_size_);
    } while (got < 0 && try_again(fd_, POLLIN));
    if (got > 0) bytes_read_ += static_cast<size_t>(got);
    return got;
}

void Input::close_file() {
    if (fd_ > STDIN_FILENO) ::close(fd_);
    fd_ = -1;
}

}  // namespace number_tool
