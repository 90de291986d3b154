#include "oci_log.h"

#include <fcntl.h>
#include <pthread.h>
#include <strings.h>
#include <sys/time.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
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
    qzoci_log_sink sink = nullptr;
    void *context = nullptr;
};
Destination destination;
// Held shared while a line is emitted, exclusively while the destination
// changes: a descriptor is never closed, a sink never returned, under a writer.
pthread_rwlock_t destination_lock = PTHREAD_RWLOCK_INITIALIZER;

thread_local bool inside_sink = false;

// Text of any length: on the stack when it is short, else on the heap.
class TextBuffer {
public:
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

// The longest form of an escaped byte is \xHH.
constexpr size_t escaped_size = 4;

// Writes the printable form of one byte, without terminator; returns its end.
// Bytes from 0x80 up pass, so UTF-8 stays readable.
char *escape(char *out, unsigned char c) {
    if (c >= 0x20 && c != 0x7f && c != '\\') {
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
            *out++ = "0123456789abcdef"[c >> 4];
            *out++ = "0123456789abcdef"[c & 15];
    }
    return out;
}

// Time, level, thread and place of a line, at most `size` - 1 bytes.
size_t format_head(char *out, size_t size, log_level level, const char *file, long line) {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    tm utc{};
    gmtime_r(&now.tv_sec, &utc);
    static_assert(sizeof(pthread_t) == sizeof(long));
    const int length = std::snprintf(
        out, size, "%04d-%02d-%02dT%02d:%02d:%02d.%06ldZ %s [%ld] %s:%ld ", utc.tm_year + 1900,
        utc.tm_mon + 1, utc.tm_mday, utc.tm_hour, utc.tm_min, utc.tm_sec, now.tv_nsec / 1000,
        level_names[level], static_cast<long>(pthread_self()), file, line);
    if (length < 0) return 0;
    return static_cast<size_t>(length) < size ? static_cast<size_t>(length) : size - 1;
}

__attribute__((format(printf, 4, 0))) void emit(log_level level, const char *file, long line,
                                                const char *fmt, va_list args) {
    // A text that cannot be formatted or does not fit in memory is cut, not lost.
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

    constexpr size_t head_size = 512;
    TextBuffer out;
    if (!out.reserve(head_size + escaped_size * length + 1)) {
        const size_t fits = (out.capacity() - head_size - 1) / escaped_size;
        if (length > fits) length = fits;
    }
    char *const text = out.data() + head_size;
    char *end = text;
    for (size_t i = 0; i < length; ++i)
        end = escape(end, static_cast<unsigned char>(raw.data()[i]));

    pthread_rwlock_rdlock(&destination_lock);
    if (destination.sink != nullptr) {
        *end = '\0';
        inside_sink = true;
        destination.sink(destination.context, level, file, line, text,
                         static_cast<size_t>(end - text));
        inside_sink = false;
    } else {
        char head[head_size];
        const size_t head_length = format_head(head, sizeof head, level, file, line);
        char *const start = text - head_length;
        std::memcpy(start, head, head_length);
        *end++ = '\n';
        while (write(destination.fd, start, static_cast<size_t>(end - start)) < 0 &&
               errno == EINTR) {
        }
    }
    pthread_rwlock_unlock(&destination_lock);
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

__attribute__((constructor)) void read_environment() {
    const int saved_errno = errno;
    if (const char *path = secure_getenv("OCI_NUMBER_LOG_FILE"); path != nullptr && *path != '\0') {
        qzoci_log_set_file(path);
    }
    if (const char *level = secure_getenv("OCI_NUMBER_LOG_LEVEL")) {
        qzoci_log_set_level(parse_level(level));
    }
    errno = saved_errno;
}

}  // namespace

extern "C" void qzoci_log_inner(log_level level, const char *file, const long line, const char *fmt,
                                ...) {
    if (level < threshold.load(std::memory_order_relaxed)) [[likely]]
        return;
    if (inside_sink || level < LOG_LEVEL_TRACE || level > LOG_LEVEL_SLOWSQL) return;
    const int saved_errno = errno;
    va_list args;
    va_start(args, fmt);
    emit(level, file, line, fmt, args);
    va_end(args);
    errno = saved_errno;
}

extern "C" void qzoci_log_set_level(int level) {
    if (level < LOG_LEVEL_TRACE || level > QZOCI_LOG_OFF) return;
    threshold.store(level, std::memory_order_relaxed);
}

extern "C" int qzoci_log_get_level(void) { return threshold.load(std::memory_order_relaxed); }

extern "C" sword qzoci_log_set_file(const char *path) {
    int fd = STDERR_FILENO;
    if (path != nullptr) {
        fd = open(path, O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, S_IRUSR | S_IWUSR);
        if (fd < 0) return -1;
    }
    pthread_rwlock_wrlock(&destination_lock);
    const int former = destination.fd;
    destination = {fd, nullptr, nullptr};
    pthread_rwlock_unlock(&destination_lock);
    const int saved_errno = errno;
    if (former != STDERR_FILENO) close(former);
    errno = saved_errno;
    return 0;
}

extern "C" void qzoci_log_set_sink(qzoci_log_sink sink, void *context) {
    pthread_rwlock_wrlock(&destination_lock);
    destination.sink = sink;
    destination.context = context;
    pthread_rwlock_unlock(&destination_lock);
}
