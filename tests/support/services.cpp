#include "support/services.h"

#include <gtest/gtest.h>

#include <cstdarg>
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

std::string text(const char *fmt, ...) {
    va_list args;
    va_start(args, fmt);
    std::string result = format(fmt, args);
    va_end(args);
    return result;
}

std::vector<std::string> take_log() { return std::exchange(log_lines, {}); }

std::string take_masked_log() {
    std::string all;
    for (const std::string &line : take_log()) all += line + "\n";
    return masked(all);
}

std::string masked(const std::string &s) {
    static const std::regex address("0x[0-9a-f]+|thread [0-9]+");
    return std::regex_replace(s, address, "P");
}

extern "C" void qzoci_log_inner(log_level level, const char *file, const long line, const char *fmt,
                                ...) {
    EXPECT_EQ(std::string(file).rfind("src/", 0), 0u) << file;
    EXPECT_GT(line, 0);
    va_list args;
    va_start(args, fmt);
    log_lines.push_back(std::string(1, " TDIWEFS"[level]) + " " + format(fmt, args));
    va_end(args);
}

extern "C" void *qzci_malloc(size_t size, const char *tag) {
    log_lines.push_back(text("T malloc %zu for %s", size, tag));
    if (heap.fail) return nullptr;
    ++heap.live;
    return std::malloc(size);
}

extern "C" void qzci_free(void *p) {
    if (p != nullptr) --heap.live;
    std::free(p);
}
