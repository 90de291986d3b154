// The log sink and the allocator that tests link in place of the library's.
#pragma once

#include <cstdarg>
#include <string>
#include <type_traits>
#include <vector>

// Lines of the log since the last call: the first letter of the level and the text.
// Places are checked on the way: a file name and a line.
std::vector<std::string> take_log();

// A text with P for every address and thread number; and the log as such a text.
std::string masked(const std::string &s);
std::string take_masked_log();

std::string print_text(const char *fmt, ...);

// printf into a string; pointers but those to characters go to %p as they are.
template <class... Arguments>
std::string text(const char *fmt, const Arguments &...arguments) {
    const auto plain = [](const auto &a) {
        using T = std::decay_t<decltype(a)>;
        if constexpr (std::is_pointer_v<T> && !std::is_same_v<T, const char *> &&
                      !std::is_same_v<T, char *>) {
            return static_cast<const void *>(a);
        } else {
            return static_cast<T>(a);
        }
    };
    return print_text(fmt, plain(arguments)...);
}

struct Heap {
    int live = 0;       // blocks that were not freed
    bool fail = false;  // the next allocations return null
};
extern Heap heap;
