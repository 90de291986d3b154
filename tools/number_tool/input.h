// Where values come from: arguments, then files ("-" is standard input), in blocks
// of whole records.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "fields.h"
#include "output.h"

namespace number_tool {

// A line longer than this is refused without being held in memory.
inline constexpr size_t max_line = size_t{1} << 20;

// How values follow one another in a file.
enum class Framing {
    lines,    // ended by a line feed, or a carriage return and line feed
    zeros,    // ended by a zero byte
    records,  // 22 bytes each
};

// Standard input is read when there are neither values nor files.
struct Inputs {
    std::vector<std::string> values;
    std::vector<std::string> files;
};

struct Block {
    // The room for the bytes belongs to the block's user and serves one block after the other.
    std::unique_ptr<char[]> room;

    size_t number = 0;                  // from 0, in the order of the input
    const std::string *file = nullptr;  // its name; null for arguments
    bool starts_file = false, is_of_first_file = false;
    Dialect dialect;  // of its columns
    Framing framing = Framing::lines;
    std::string_view bytes;    // whole records, each with its end but perhaps the file's last
    bool is_too_long = false;  // of a line of which `bytes` has only the start
    std::string failure;       // instead of bytes: why the file cannot be read
};

// Not safe to call from several threads at once.
class Input {
public:
    // The dialect of lines with columns tells where they end. `block_size` is how much is read at
    // once. `wake` is a descriptor that ends all waiting when it can be read, or -1.
    Input(const Inputs &inputs, Framing framing, std::optional<Dialect> dialect, size_t block_size,
          const Output &out, int wake);
    ~Input();
    Input(const Input &) = delete;
    Input &operator=(const Input &) = delete;

    // Returns false when there is no more.
    bool next(Block &block);

    // Bytes read, and the bytes of all inputs, 0 when not known.
    size_t bytes_read() const { return bytes_read_; }
    size_t bytes_in_all() const { return bytes_in_all_; }

private:
    bool next_values(Block &block);
    bool open_file(Block &block);
    bool fill(Block &block);
    void drop_line(Block &block, char *start);
    size_t find_last_end(std::string_view bytes, size_t from);
    // Returns the count of bytes, 0 at the end, or -1 with errno.
    ssize_t read_some(char *to);
    void close_file();

    const std::vector<std::string> &values_;
    std::vector<std::string> files_;
    Framing framing_;
    std::optional<Dialect> given_dialect_;
    size_t block_size_;
    const Output &out_;
    int wake_;

    size_t next_value_ = 0, next_file_ = 0, next_block_ = 0;
    int fd_ = -1;
    bool is_at_start_ = false, is_at_end_ = false, waits_ = false;
    Dialect dialect_;     // of the open file
    CsvScanner scanner_;  // of its lines
    std::string rest_;    // read, behind the last whole record
    size_t bytes_read_ = 0, bytes_in_all_ = 0;
};

}  // namespace number_tool
