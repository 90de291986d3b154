#include "stream.h"

#include <sys/eventfd.h>

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <cstring>
#include <exception>
#include <memory>
#include <mutex>
#include <optional>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include "descriptor.h"
#include "messages.h"
#include "oci.h"
#include "progress.h"

namespace number_tool {

namespace {

// Results of a block go out together, or when they have become this many bytes.
constexpr size_t max_held = size_t{1} << 18;
// Long blocks are read and written by few calls of the system, and jobs wait for one another less
// often.
constexpr size_t block_size = size_t{1} << 18;

// A thread ends because another one has failed.
struct Stopped {};

// A descriptor that can be read from once it has been raised.
class WakeUp {
public:
    explicit WakeUp(bool is_needed) : fd_(is_needed ? eventfd(0, EFD_CLOEXEC) : -1) {}
    WakeUp(const WakeUp &) = delete;
    WakeUp &operator=(const WakeUp &) = delete;
    ~WakeUp() {
        if (fd_ >= 0) ::close(fd_);
    }
    int fd() const { return fd_; }
    void raise() const {
        if (fd_ >= 0) eventfd_write(fd_, 1);
    }

private:
    int fd_;
};

// What an operation has said of a value.
struct Refusal {
    size_t record;  // in its block, from 0
    size_t field;   // from 1, or 0
    size_t result;  // where in the results it would stand
    std::string text;
};

// What has become of the records of a block so far.
struct Results {
    std::unique_ptr<char[]> bytes;
    size_t size = 0, capacity = 0;
    std::vector<Refusal> refusals;
    size_t values = 0;

    // At least `count` bytes to write to.
    char *room(size_t count) {
        if (capacity - size < count) grow(count);
        return bytes.get() + size;
    }
    void append(std::string_view text) {
        if (text.empty()) return;
        std::memcpy(room(text.size()), text.data(), text.size());
        size += text.size();
    }

private:
    void grow(size_t count) {
        capacity = std::max(2 * capacity, size + count);
        std::unique_ptr<char[]> larger(new char[capacity]);
        if (size > 0) std::memcpy(larger.get(), bytes.get(), size);
        bytes = std::move(larger);
    }
};

// What the threads share: they take blocks in turn, and hand over results in the same order.
class Exchange {
public:
    Exchange(const StreamOptions &options, Output &out)
        : options_(options),
          out_(out),
          wake_(options.jobs > 1),
          input_(options.inputs, options.framing,
                 options.fields.empty() && !options.reads_columns ? std::nullopt
                                                                  : std::optional(options.dialect),
                 block_size, out, wake_.fd()),
          progress_(options.has_progress && !out.is_terminal() && isatty(STDERR_FILENO) != 0,
                    input_.bytes_in_all()) {}

    bool take(Block &block) {
        const std::lock_guard lock(input_mutex_);
        if (is_stopped_) return false;
        const bool good = input_.next(block);
        bytes_read_ = input_.bytes_read();
        return good;
    }

    // Waits for the block's turn. With its last results, the turn goes to the next block.
    void hand_over(const Block &block, size_t records, Results &results, bool are_last) {
        std::unique_lock lock(turn_mutex_);
        turn_changed_.wait(lock, [&] { return is_stopped_ || turn_ == block.number; });
        if (is_stopped_) throw Stopped{};
        if (block.starts_file) first_record_ = 0;
        if (!block.failure.empty()) {
            note_failure();
            report(*block.file + ": " + block.failure);
        }
        write(block, results);
        summary_.values += results.values;
        results.size = results.values = 0;
        results.refusals.clear();
        if (are_last) {
            first_record_ += records;
            progress_.update(summary_.values, bytes_read_);
            ++turn_;
            lock.unlock();
            turn_changed_.notify_all();
        }
    }

    // Ends all threads; finish() throws the first failure.
    void stop(std::exception_ptr failure) {
        {
            const std::lock_guard lock(turn_mutex_);
            if (!is_stopped_) failure_ = std::move(failure);
            is_stopped_ = true;
        }
        turn_changed_.notify_all();
        wake_.raise();
    }

    Summary finish() {
        progress_.finish();
        if (failure_) std::rethrow_exception(failure_);
        // One refused value was named, which says all; and so does the message of a stop.
        if (!is_stopped_ && summary_.refused > (options_.is_quiet ? 0 : 1)) {
            report(std::to_string(summary_.refused) + " of " + std::to_string(summary_.values) +
                   (summary_.values == 1 ? " value" : " values") + " refused");
        }
        return summary_;
    }

private:
    void note_failure() {
        summary_.failed = true;
        out_.note_refusal();
    }

    void write(const Block &block, const Results &results) {
        const std::string_view bytes{results.bytes.get(), results.size};
        size_t written = 0;
        const auto write_up_to = [&](size_t end) {
            if (end > written) out_.write(bytes.substr(written, end - written));
            written = end;
        };
        for (const Refusal &refusal : results.refusals) {
            ++summary_.refused;
            ++summary_.refused_of_field[refusal.field];
            const bool is_last = summary_.refused > options_.max_errors;
            if (options_.on_error == OnError::fail || is_last) note_failure();
            // On a terminal, results and messages keep their order.
            if (out_.is_terminal() || is_last) write_up_to(refusal.result);
            if (!options_.is_quiet || is_last) {
                report(place(block, refusal.record) + refusal.text);
            }
            if (is_last) throw_too_many();
        }
        write_up_to(bytes.size());
    }

    [[noreturn]] void throw_too_many() {
        report("stopped: more than " + std::to_string(options_.max_errors) +
               (options_.max_errors == 1 ? " value" : " values") + " refused");
        throw Stopped{};
    }

    std::string place(const Block &block, size_t record) const {
        const size_t number = first_record_ + record;
        if (block.file == nullptr) return "argument " + std::to_string(number + 1) + ": ";
        if (block.framing != Framing::records) {
            return *block.file + ":" + std::to_string(number + 1) + ": ";
        }
        return *block.file + ": record " + std::to_string(number + 1) + " at byte " +
               std::to_string(number * OCI_NUMBER_SIZE) + ": ";
    }

    const StreamOptions &options_;
    Output &out_;
    WakeUp wake_;

    std::mutex input_mutex_;
    Input input_;
    std::atomic<size_t> bytes_read_ = 0;

    std::mutex turn_mutex_;
    std::condition_variable turn_changed_;
    size_t turn_ = 0;
    std::atomic<bool> is_stopped_ = false;
    std::exception_ptr failure_;
    size_t first_record_ = 0;  // of the block whose turn it is, in its file
    Summary summary_;
    Progress progress_;
};

// One thread's work on the blocks that it takes.
class Worker {
public:
    Worker(const StreamOptions &options, Exchange &exchange, Operation operation)
        : options_(options), exchange_(exchange), operation_(std::move(operation)) {}

    void run() {
        while (exchange_.take(block_)) {
            record_ = 0;
            if (block_.is_too_long) {
                refuse_long_line(block_.bytes);
                ++record_;
            } else if (block_.framing == Framing::records) {
                convert_records();
            } else {
                convert_lines();
            }
            exchange_.hand_over(block_, record_, results_, true);
        }
    }

private:
    void convert_records() {
        for (std::string_view rest = block_.bytes; !rest.empty();) {
            const size_t size = std::min<size_t>(rest.size(), OCI_NUMBER_SIZE);
            convert_whole({rest.data(), size});
            rest.remove_prefix(size);
            end_record();
        }
    }

    void convert_lines() {
        const bool are_lines = block_.framing == Framing::lines;
        const char line_end = are_lines ? '\n' : '\0';
        fields_.dialect = block_.dialect;
        CsvScanner scanner(block_.dialect.delimiter, line_end);
        const bool is_csv = has_columns() && block_.dialect.is_csv && block_.file != nullptr;
        const char *at = block_.bytes.data();
        const char *const end = at + block_.bytes.size();
        while (at != end) {
            const auto rest = static_cast<size_t>(end - at);
            size_t length;
            if (is_csv) {
                length = std::min(scanner.find({at, rest}, 0), rest);
            } else {
                const void *const found = std::memchr(at, line_end, rest);
                length = found == nullptr
                             ? rest
                             : static_cast<size_t>(static_cast<const char *>(found) - at);
            }
            std::string_view line{at, length};
            at += length + (length < rest);
            const bool has_return = are_lines && length < rest && line.ends_with('\r');
            if (has_return) line.remove_suffix(1);
            convert_line(line, has_return);
            end_record();
        }
    }

    bool has_columns() const { return options_.reads_columns || !options_.fields.empty(); }

    void end_record() {
        ++record_;
        if (results_.size >= max_held) exchange_.hand_over(block_, record_, results_, false);
    }

    void convert_line(std::string_view line, bool has_return) {
        if (options_.has_header && block_.starts_file && record_ == 0) {
            if (block_.is_of_first_file && options_.results == ResultPlace::in_line) {
                results_.append(line);
                end_line(has_return);
            }
        } else if (line.size() > max_line) {
            refuse_long_line(line);
        } else if (std::string reason; has_columns() && !fields_.split(line, reason)) {
            refuse_line(line, reason);
        } else if (options_.fields.empty()) {
            convert_whole(line);
        } else {
            convert_fields(line, has_return);
        }
    }

    void convert_whole(std::string_view text) {
        ++results_.values;
        char *const out = results_.room(max_result + 1);
        reason_.clear();
        char *end = operation_({text, &fields_, 0}, out, reason_);
        if (end == nullptr) {
            refuse(0, shown(text) + ": " + reason_);
            substitute(text);
            return;
        }
        if (options_.ends_results) *end++ = line_end();
        results_.size += static_cast<size_t>(end - out);
    }

    // The fields that are values, in turn; between them the line as it is.
    void convert_fields(std::string_view line, bool has_return) {
        const size_t start = results_.size;
        const bool is_in_line = options_.results == ResultPlace::in_line;
        const char *copied = line.data();
        bool is_whole = true;
        for (const auto &[first, last] : options_.fields.ranges()) {
            const size_t count = fields_.raw.size();
            if (last > count && last != FieldList::open_end) {
                ++results_.values;
                const size_t missing = std::max(first, count + 1);
                refuse(missing, "the line has " + std::to_string(count) +
                                    (count == 1 ? " field" : " fields"));
                is_whole = false;
            }
            for (size_t field = first; field <= std::min(last, count); ++field) {
                const std::string_view raw = fields_.raw[field - 1];
                if (is_in_line) {
                    results_.append({copied, static_cast<size_t>(raw.data() - copied)});
                    copied = raw.data() + raw.size();
                }
                is_whole &= convert_field(field, raw);
            }
        }
        if (!is_in_line) return;
        if (!is_whole && drops_refused()) {
            results_.size = start;
            return;
        }
        results_.append({copied, static_cast<size_t>(line.data() + line.size() - copied)});
        end_line(has_return);
    }

    bool convert_field(size_t field, std::string_view raw) {
        ++results_.values;
        const std::string_view text = fields_.value(field - 1, scratch_);
        char *const out = results_.room(max_result + 1);
        reason_.clear();
        char *end = operation_({text, &fields_, field}, out, reason_);
        if (end != nullptr && options_.results == ResultPlace::in_line) {
            const std::string_view result{out, static_cast<size_t>(end - out)};
            const Dialect &dialect = fields_.dialect;
            if (dialect.is_csv && (raw.starts_with('"') || needs_quotes(result, dialect))) {
                // No result has quotation marks but those of JSON, which are doubled.
                const std::string quoted = in_csv_quotes(result);
                results_.append(quoted);
                return true;
            }
            if (result.find(dialect.delimiter) != result.npos) {
                reason_ = "the result has the delimiter in it";
                end = nullptr;
            }
        }
        if (end == nullptr) {
            refuse(field, shown(text) + ": " + reason_);
            if (options_.results == ResultPlace::in_line) {
                if (options_.on_error == OnError::keep) results_.append(raw);
                if (options_.on_error == OnError::null) results_.append(options_.null_text);
            } else {
                substitute(text);
            }
            return false;
        }
        results_.size += static_cast<size_t>(end - out);
        if (options_.results == ResultPlace::alone && options_.ends_results) end_line(false);
        return true;
    }

    // Of a line that has no values to be looked at.
    void refuse_line(std::string_view line, const std::string &reason) {
        ++results_.values;
        refuse(0, shown(line) + ": " + reason);
        substitute(line);
    }

    // Only its start is at hand, so that it cannot stay as it is.
    void refuse_long_line(std::string_view start) {
        ++results_.values;
        refuse(0, shown(start) + ": line is longer than " + std::to_string(max_line) + " bytes");
        if (options_.on_error == OnError::null) substitute({});
    }

    void refuse(size_t field, const std::string &text) {
        const std::string place = field == 0 ? "" : "field " + std::to_string(field) + ": ";
        results_.refusals.push_back({record_, field, results_.size, place + text});
    }

    bool drops_refused() const {
        return options_.on_error == OnError::fail || options_.on_error == OnError::skip;
    }

    // In place of the result of a refused value.
    void substitute(std::string_view text) {
        if (drops_refused() || options_.results == ResultPlace::nowhere) return;
        results_.append(options_.on_error == OnError::keep ? text : options_.null_text);
        end_line(false);
    }

    std::string shown(std::string_view text) const {
        return block_.framing == Framing::records ? hex_text(text) : in_quotes(text);
    }

    char line_end() const { return options_.framing == Framing::zeros ? '\0' : '\n'; }

    void end_line(bool has_return) {
        if (has_return) results_.append("\r");
        const char end = line_end();
        results_.append({&end, 1});
    }

    const StreamOptions &options_;
    Exchange &exchange_;
    Operation operation_;
    Block block_;
    size_t record_ = 0;  // in the block
    Results results_;
    Fields fields_;
    std::string reason_, scratch_;
};

}  // namespace

Summary for_each_value(const StreamOptions &options,
                       const std::function<Operation()> &make_operation, Output &out) {
    Exchange exchange(options, out);
    const auto work = [&] {
        try {
            Worker(options, exchange, make_operation()).run();
        } catch (const Stopped &) {
            exchange.stop(nullptr);
        } catch (...) {
            exchange.stop(std::current_exception());
        }
    };
    std::vector<std::jthread> others;
    try {
        for (unsigned i = 1; i < options.jobs; ++i) others.emplace_back(work);
    } catch (const std::system_error &) {
        // The threads that there are do the work.
    }
    work();
    others.clear();
    return exchange.finish();
}

}  // namespace number_tool
