// The log sink and the allocator that tests link in place of the library's.
#pragma once

#include <cstdarg>
#include <string>
#include <vector>

// Lines of the log since the last call: "D " or "E " (or the level's number)
// and the text. Places are checked on the way: a file name and a line.
std::vector<std::string> take_log();

// The same as one text, with P for every address and thread number.
std::string take_masked_log();

// printf into a string.
std::string text(const char *fmt, ...) __attribute__((format(printf, 1, 2)));

struct Heap {
    int live = 0;                   // blocks that were not freed
    int calls = 0;                  // allocations
    bool fail = false;              // the next allocations return null
    std::vector<std::string> tags;  // of every call, with the size: "tag:size"
};
extern Heap heap;
