#pragma once

#include <array>
#include <spawn.h>
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

// Spawn flags beyond the runner's own. macOS has no atomic close-on-exec pipe,
// so between `pipe` and `fcntl` another thread's child could inherit the ends:
// there POSIX_SPAWN_CLOEXEC_DEFAULT lets only the descriptors the file actions
// name reach the child. Linux makes its pipes close-on-exec atomically: 0.
short platformSpawnFlags();

// Lets the child keep descriptor `fd` as this process has it. Needed under
// POSIX_SPAWN_CLOEXEC_DEFAULT for standard input; no file action on Linux,
// where every descriptor without FD_CLOEXEC is kept. Returns posix_spawn's
// error number, 0 on success.
int keepInChild(posix_spawn_file_actions_t& actions, int fd);

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
