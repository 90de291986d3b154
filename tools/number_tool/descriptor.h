// Reads and writes of descriptors that may be interrupted or not ready.
#pragma once

#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string_view>

namespace number_tool {

// After a read or write that failed: waits when the descriptor is not ready.
// Returns whether to try again.
inline bool try_again(int fd, short events) {
    if (errno == EINTR) return true;
    if (errno != EAGAIN) return false;
    pollfd ready{fd, events, 0};
    return poll(&ready, 1, -1) >= 0 || errno == EINTR;
}

// Returns 0, or the errno of a write that failed.
inline int write_all(int fd, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t written = ::write(fd, bytes.data(), bytes.size());
        if (written >= 0) {
            bytes.remove_prefix(static_cast<size_t>(written));
        } else if (!try_again(fd, POLLOUT)) {
            return errno;
        }
    }
    return 0;
}

}  // namespace number_tool
