#include "support/services.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <regex>

#include "oci_log.h"
#include "oci_malloc.h"

Heap heap;

static std::vector<std::string> log_lines;

static std::string format(const char *fmt, va_list args) {
    char *out = nullptr;
    if (vasprintf(&out, fmt, args) < 0) std::abort();
    std::string result = out;
    free(out);
    return result;
}

std::string print_text(const char *fmt, ...) {
    va_list args;
    va_start(args, fmt);
    std::string result = format(fmt, args);
    va_end(args);
    return result;
}

std::vector<std::string> take_log() { return std::exchange(log_lines, {}); }

std::string take_masked_log() { return masked(take_log()); }

std::string masked(const std::vector<std::string> &lines) {
    std::string all;
    for (const std::string &line : lines) all += line + "\n";
    return std::regex_replace(all, std::regex("0x[0-9a-f]+|thread [0-9]+"), "P");
}

extern "C" void qzoci_log_inner(log_level level, const char *file, const long line, const char *fmt,
                                ...) {
    EXPECT_EQ(std::string(file).rfind("src/", 0), 0u) << file;
    EXPECT_GT(line, 0);
    va_list args;
    va_start(args, fmt);
    const std::string mark = level == LOG_LEVEL_DEBUG   ? "D"
                             : level == LOG_LEVEL_ERROR ? "E"
                                                        : std::to_string(level);
    log_lines.push_back(mark + " " + format(fmt, args));
    va_end(args);
}

extern "C" void *qzci_malloc(size_t size, const char *tag) {
    ++heap.calls;
    heap.tags.push_back(text("%s:%zu", tag, size));
    if (heap.fail) return nullptr;
    ++heap.live;
    return std::malloc(size);
}

extern "C" void qzci_free(void *p) {
    if (p != nullptr) --heap.live;
    std::free(p);
}
