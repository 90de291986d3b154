// The log sink and the allocator that tests link in place of the library's.
#pragma once

#include <string>
#include <vector>

// Lines of the log since the last call: the first letter of the level and the text.
// Places are checked on the way: a file name and a line.
std::vector<std::string> take_log();

// A text with P for every address and thread number; and the log as such a text.
std::string masked(const std::string &s);
std::string take_masked_log();

// printf into a string.
std::string text(const char *fmt, ...);

struct Heap {
    int live = 0;       // blocks that were not freed
    bool fail = false;  // the next allocations return null
};
extern Heap heap;
