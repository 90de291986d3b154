// A line on the terminal that tells how far long work is.
#pragma once

#include <chrono>
#include <cstddef>

namespace number_tool {

class Progress {
public:
    // `bytes_in_all` is 0 when not known. Shows nothing when not wanted.
    Progress(bool is_wanted, size_t bytes_in_all);
    void update(size_t values, size_t bytes);
    // Takes the line away.
    void finish();

private:
    using Clock = std::chrono::steady_clock;

    bool is_wanted_;
    size_t bytes_in_all_;
    Clock::time_point start_, next_;
};

}  // namespace number_tool
