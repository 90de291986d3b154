#include "output.h"

#include "descriptor.h"

namespace number_tool {

Output::Output() : terminal_(isatty(STDOUT_FILENO) != 0) {}

void Output::write(std::string_view bytes) {
    const int error = write_all(STDOUT_FILENO, bytes);
    if (error == EPIPE) throw OutputClosed{has_refused_ ? 1 : 0};
    if (error != 0) throw OutputFailed{error};
}

void Output::close() {
    // A descriptor that was never open is no error when nothing was written.
    if (::close(STDOUT_FILENO) != 0 && errno != EBADF && errno != EINTR) throw OutputFailed{errno};
}

bool Output::is_same_file(int fd) const {
    struct stat in {
    }, out{};
    return fstat(fd, &in) == 0 && fstat(STDOUT_FILENO, &out) == 0 && S_ISREG(in.st_mode) &&
           in.st_dev == out.st_dev && in.st_ino == out.st_ino;
}

}  // namespace number_tool
