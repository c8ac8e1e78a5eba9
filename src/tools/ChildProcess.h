#pragma once

#include <array>
#include <sys/types.h>

namespace korvane::detail {

// The platform half of the process runner: a pipe whose ends don't leak into
// other children, and a descriptor that becomes readable once a child has
// ended, so the runner can wait for output and exit in one poll() with a
// deadline instead of a polling loop.
//
// Linux uses a pidfd, macOS a kqueue watching the process. Both need the child
// to be unreaped when the watch is made, which holds because only the runner
// reaps its children.
std::array<int, 2> makeCloseOnExecPipe(); // throws std::system_error

class ChildExitWatch {
  public:
    explicit ChildExitWatch(pid_t pid); // throws std::system_error
    ~ChildExitWatch();
    ChildExitWatch(const ChildExitWatch&) = delete;
    ChildExitWatch& operator=(const ChildExitWatch&) = delete;

    int fd() const { return fd_; }

  private:
    int fd_ = -1;
};

} // namespace korvane::detail
