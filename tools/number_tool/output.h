// Standard output.
#pragma once

#include <string_view>

namespace number_tool {

// Nobody reads standard output any more.
struct OutputClosed {
    int status;  // of the tool: what was refused before counts
};
// Standard output cannot be written.
struct OutputFailed {
    int error;
};

class Output {
public:
    Output();
    void write(std::string_view bytes);
    // So that late write errors are seen too.
    void close();

    bool is_terminal() const { return terminal_; }
    // Whether the open file is the one that standard output writes.
    bool is_same_file(int fd) const;
    // From now on a closed output makes the tool end with status 1.
    void note_refusal() { has_refused_ = true; }

private:
    bool terminal_;
    bool has_refused_ = false;
};

}  // namespace number_tool
