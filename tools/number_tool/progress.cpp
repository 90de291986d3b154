#include "progress.h"

#include <cstdio>

#include "messages.h"

namespace number_tool {

namespace {

// Short work shows nothing.
constexpr auto first_after = std::chrono::seconds(1);
constexpr auto then_every = std::chrono::milliseconds(200);

}  // namespace

Progress::Progress(bool is_wanted, size_t bytes_in_all)
    : is_wanted_(is_wanted),
      bytes_in_all_(bytes_in_all),
      start_(Clock::now()),
      next_(start_ + first_after) {}

void Progress::update(size_t values, size_t bytes) {
    if (!is_wanted_) return;
    const Clock::time_point now = Clock::now();
    if (now < next_) return;
    next_ = now + then_every;
    const double seconds = std::chrono::duration<double>(now - start_).count();
    char text[80];
    int length = std::snprintf(text, sizeof text, "%.1f million values, %.2f million/s",
                               static_cast<double>(values) / 1e6,
                               static_cast<double>(values) / 1e6 / seconds);
    if (bytes_in_all_ > 0 && bytes > 0 && bytes <= bytes_in_all_) {
        const double share = static_cast<double>(bytes) / static_cast<double>(bytes_in_all_);
        std::snprintf(text + length, sizeof text - static_cast<size_t>(length),
                      ", %.0f %%, %.0f s left", 100 * share, seconds * (1 / share - 1));
    }
    show_progress(text);
}

void Progress::finish() {
    if (is_wanted_) show_progress({});
}

}  // namespace number_tool
