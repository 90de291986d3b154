#include "oci_log.h"

#include <fcntl.h>
#include <pthread.h>
#include <signal.h>
#include <strings.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>

namespace {

constexpr const char *level_names[] = {"",     "TRACE", "DEBUG", "INFO",
                                       "WARN", "ERROR", "FATAL", "SLOWSQL"};
static_assert(sizeof level_names / sizeof *level_names == LOG_LEVEL_SLOWSQL + 1);

// The filter is read on every call of every function, so it stands apart from
// the destination, which is read under its lock by enabled lines only.
std::atomic<int> threshold{QZOCI_LOG_OFF};

struct Destination {
    int fd = STDERR_FILENO;
    // Of the file that was opened: a program that closes descriptors at random closes this one
    // too, and the number may then be another file's.
    dev_t device = 0;
    ino_t inode = 0;
    qzoci_log_sink sink = nullptr;
    void *context = nullptr;
};
Destination destination;
// Held while a line is emitted and while the destination changes: a descriptor is
// never closed, a sink never exchanged, under a writer.
pthread_mutex_t destination_lock = PTHREAD_MUTEX_INITIALIZER;

// Set when a write left a line without its end; the next one ends it first.
std::atomic<bool> line_is_cut{false};

// Set while a thread emits a line or changes the destination: what a signal handler or a sink
// logs in that thread is dropped, as it would wait for its own lock.
thread_local volatile sig_atomic_t is_inside = 0;

class Inside {
public:
    Inside() { is_inside = 1; }
    ~Inside() { is_inside = 0; }
    Inside(const Inside &) = delete;
    Inside &operator=(const Inside &) = delete;
};

bool is_file_we_opened(const Destination &d) {
    struct stat now;
    return d.fd != STDERR_FILENO && fstat(d.fd, &now) == 0 && now.st_dev == d.device &&
           now.st_ino == d.inode;
}

// Text of any length: on the stack when it is short, else on the heap.
class TextBuffer {
public:
    // cppcheck-suppress uninitMemberVar ; written before it is read
    TextBuffer() = default;
    TextBuffer(const TextBuffer &) = delete;
    TextBuffer &operator=(const TextBuffer &) = delete;
    ~TextBuffer() {
        if (data_ != inline_) std::free(data_);
    }
    // False, with the old buffer kept, when there is no memory.
    bool reserve(size_t size) {
        if (size <= capacity_) return true;
        auto *data = static_cast<char *>(std::malloc(size));
        if (data == nullptr) return false;
        if (data_ != inline_) std::free(data_);
        data_ = data;
        capacity_ = size;
        return true;
    }
    char *data() { return data_; }
    size_t capacity() const { return capacity_; }

private:
    char inline_[1024];
    char *data_ = inline_;
    size_t capacity_ = sizeof inline_;
};

bool is_plain(unsigned char c) { return c >= 0x20 && c != 0x7f && c != '\\'; }

// The length of the escaped text.
size_t escaped_length(const char *text, size_t length) {
    size_t result = length;
    for (size_t i = 0; i < length; ++i) {
        const auto c = static_cast<unsigned char>(text[i]);
        if (!is_plain(c)) result += c == '\n' || c == '\r' || c == '\t' || c == '\\' ? 1 : 3;
    }
    return result;
}

// Writes the printable form of one byte, without terminator; returns its end.
// Bytes from 0x80 up pass, so UTF-8 stays readable.
char *escape(char *out, unsigned char c) {
    if (is_plain(c)) {
        *out++ = static_cast<char>(c);
        return out;
    }
    *out++ = '\\';
    switch (c) {
        case '\n': *out++ = 'n'; break;
        case '\r': *out++ = 'r'; break;
        case '\t': *out++ = 't'; break;
        case '\\': *out++ = '\\'; break;
        default:
            *out++ = 'x';
            *out++ = "0123456789ABCDEF"[c >> 4];
            *out++ = "0123456789ABCDEF"[c & 15];
    }
    return out;
}

// Time, level, thread and place of a line, at most `size` - 1 bytes. The date is
// computed here, as the C library's would take its time zone's lock.
size_t format_head(char *out, size_t size, log_level level, const char *file, long line) {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    constexpr long seconds_of_day = 86400;
    const auto days = static_cast<int>(now.tv_sec / seconds_of_day);
    const auto second = static_cast<int>(now.tv_sec % seconds_of_day);
    const std::chrono::year_month_day date{std::chrono::sys_days{std::chrono::days{days}}};
    static_assert(sizeof(pthread_t) == sizeof(long));
    const int length = std::snprintf(
        out, size, "%04d-%02u-%02uT%02d:%02d:%02d.%06ldZ %s [%ld] %s:%ld ",
        static_cast<int>(date.year()), static_cast<unsigned>(date.month()),
        static_cast<unsigned>(date.day()), second / 3600, second / 60 % 60, second % 60,
        now.tv_nsec / 1000, level_names[level], static_cast<long>(pthread_self()), file, line);
    if (length < 0) return 0;
    return static_cast<size_t>(length) < size ? static_cast<size_t>(length) : size - 1;
}

// One write of the bytes before `end`, which may take one byte in front of
// `start` too. A reader that has gone away, or a file that may not grow, does not
// end the program: the signal is held back and taken off the thread.
void write_line(int fd, char *start, const char *end) {
    sigset_t held, former, pending;
    sigemptyset(&held);
    sigaddset(&held, SIGPIPE);
    sigaddset(&held, SIGXFSZ);
    sigpending(&pending);
    pthread_sigmask(SIG_BLOCK, &held, &former);

    if (line_is_cut.load(std::memory_order_relaxed)) *--start = '\n';
    const auto size = static_cast<size_t>(end - start);
    ssize_t written;
    do {
        written = write(fd, start, size);
    } while (written < 0 && errno == EINTR);
    if (written > 0) {
        line_is_cut.store(static_cast<size_t>(written) < size, std::memory_order_relaxed);
    }

    const int signal = written >= 0 ? 0 : errno == EPIPE ? SIGPIPE : errno == EFBIG ? SIGXFSZ : 0;
    if (signal != 0 && sigismember(&pending, signal) == 0) {
        sigemptyset(&held);
        sigaddset(&held, signal);
        const timespec no_time{};
        while (sigtimedwait(&held, nullptr, &no_time) < 0 && errno == EINTR) {
        }
    }
    pthread_sigmask(SIG_SETMASK, &former, nullptr);
}

__attribute__((format(printf, 4, 0))) void emit(log_level level, const char *file, long line,
                                                const char *fmt, va_list args) {
    // A text that does not fit in memory is cut, not lost.
    TextBuffer raw;
    va_list again;
    va_copy(again, args);
    const int measured = std::vsnprintf(raw.data(), raw.capacity(), fmt, args);
    size_t length = measured < 0 ? 0 : static_cast<size_t>(measured);
    if (length >= raw.capacity()) {
        if (raw.reserve(length + 1)) {
            std::vsnprintf(raw.data(), raw.capacity(), fmt, again);
        } else {
            length = raw.capacity() - 1;
        }
    }
    va_end(again);

    // The head stands right before the text, with a byte to spare before it.
    constexpr size_t head_size = 400;
    constexpr size_t text_start = head_size + 1;
    TextBuffer out;
    while (!out.reserve(text_start + escaped_length(raw.data(), length) + 1)) length /= 2;
    char *const text = out.data() + text_start;
    char *end = text;
    for (size_t i = 0; i < length; ++i) {
        end = escape(end, static_cast<unsigned char>(raw.data()[i]));
    }

    pthread_mutex_lock(&destination_lock);
    if (destination.sink != nullptr) {
        *end = '\0';
        destination.sink(destination.context, level, file, line, text,
                         static_cast<size_t>(end - text));
    } else if (destination.fd == STDERR_FILENO || is_file_we_opened(destination)) {
        char head[head_size];
        const size_t head_length = format_head(head, sizeof head, level, file, line);
        std::memcpy(text - head_length, head, head_length);
        *end++ = '\n';
        write_line(destination.fd, text - head_length, end);
    }
    pthread_mutex_unlock(&destination_lock);
}

[[gnu::noinline, gnu::format(printf, 4, 0)]] void write_wanted(log_level level, const char *file,
                                                               long line, const char *fmt,
                                                               va_list args) {
    if (is_inside != 0 || level < LOG_LEVEL_TRACE || level > LOG_LEVEL_SLOWSQL) return;
    const Inside inside;
    const int saved_errno = errno;
    // A thread that is cancelled in the write would keep the lock.
    int cancel_state = 0;
    pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &cancel_state);
    emit(level, file, line, fmt, args);
    pthread_setcancelstate(cancel_state, nullptr);
    errno = saved_errno;
}

// The level that a name or number stands for, 0 when there is none.
int parse_level(const char *text) {
    if (strcasecmp(text, "OFF") == 0) return QZOCI_LOG_OFF;
    for (int level = LOG_LEVEL_TRACE; level <= LOG_LEVEL_SLOWSQL; ++level) {
        if (strcasecmp(text, level_names[level]) == 0) return level;
    }
    if (text[0] >= '1' && text[0] <= '8' && text[1] == '\0') return text[0] - '0';
    return 0;
}

// The file opened for appending, or -1. Descriptors below 3 are those of the standard streams,
// also in a program that runs with one of them closed.
int open_log(const char *path) {
    // Without O_NONBLOCK a FIFO would wait for its reader.
    const int fd = open(path, O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC | O_NOCTTY | O_NONBLOCK,
                        S_IRUSR | S_IWUSR);
    if (fd < 0) return -1;
    fcntl(fd, F_SETFL, O_APPEND);
    if (fd > STDERR_FILENO) return fd;
    const int above = fcntl(fd, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    const int saved_errno = errno;
    close(fd);
    errno = saved_errno;
    return above;
}

// A child process starts with the lock free and the destination whole, whatever
// other threads were doing at the fork. A sink that forks holds it already.
void before_fork() {
    if (is_inside == 0) pthread_mutex_lock(&destination_lock);
}
void after_fork() {
    if (is_inside == 0) pthread_mutex_unlock(&destination_lock);
}

__attribute__((constructor)) void start() {
    const int saved_errno = errno;
    pthread_atfork(before_fork, after_fork, after_fork);
    if (const char *path = secure_getenv("OCI_NUMBER_LOG_FILE"); path != nullptr && *path != '\0') {
        qzoci_log_set_file(path);
    }
    if (const char *level = secure_getenv("OCI_NUMBER_LOG_LEVEL")) {
        qzoci_log_set_level(parse_level(level));
    }
    errno = saved_errno;
}

// An unloaded library leaves no descriptor open. When a program ends, it calls no sink that may
// be gone by now; a thread that stands in a write keeps its file.
__attribute__((destructor)) void stop() {
    threshold.store(QZOCI_LOG_OFF, std::memory_order_relaxed);
    if (pthread_mutex_trylock(&destination_lock) != 0) return;
    if (is_file_we_opened(destination)) {
        close(destination.fd);
        destination.fd = -1;
    }
    pthread_mutex_unlock(&destination_lock);
}

}  // namespace

// Saves its registers only past the filter: a line that is not wanted costs a load, a
// comparison and the arguments. It has no array of its own that could overflow, so its stack needs
// no guard.
extern "C" __attribute__((no_stack_protector)) void qzoci_log_inner(log_level level,
                                                                    const char *file,
                                                                    const long line,
                                                                    const char *fmt, ...) {
    if (level < threshold.load(std::memory_order_relaxed)) [[likely]]
        return;
    va_list args;
    va_start(args, fmt);
    write_wanted(level, file, line, fmt, args);
    va_end(args);
}

extern "C" void qzoci_log_set_level(int level) {
    if (level < LOG_LEVEL_TRACE || level > QZOCI_LOG_OFF) return;
    threshold.store(level, std::memory_order_relaxed);
}

extern "C" int qzoci_log_get_level(void) { return threshold.load(std::memory_order_relaxed); }

extern "C" sword qzoci_log_set_file(const char *path) {
    Destination opened;
    if (path != nullptr) {
        opened.fd = open_log(path);
        if (opened.fd < 0) return -1;
        struct stat file;
        fstat(opened.fd, &file);
        opened.device = file.st_dev;
        opened.inode = file.st_ino;
    }
    const Inside inside;
    pthread_mutex_lock(&destination_lock);
    const Destination former = destination;
    destination = opened;
    line_is_cut.store(false, std::memory_order_relaxed);
    pthread_mutex_unlock(&destination_lock);
    const int saved_errno = errno;
    if (is_file_we_opened(former)) close(former.fd);
    errno = saved_errno;
    return 0;
}

extern "C" void qzoci_log_set_sink(qzoci_log_sink sink, void *context) {
    const Inside inside;
    pthread_mutex_lock(&destination_lock);
    destination.sink = sink;
    destination.context = context;
    pthread_mutex_unlock(&destination_lock);
}
