#include "tools/ChildProcess.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/syscall.h>
#include <system_error>
#include <unistd.h>

namespace korvane::detail {

std::array<int, 2> makeCloseOnExecPipe() {
    int fds[2];
    if (pipe2(fds, O_CLOEXEC) != 0) {
        throw std::system_error(errno, std::generic_category());
    }
    return {fds[0], fds[1]};
}

short platformSpawnFlags() {
    return 0;
}

int keepInChild(posix_spawn_file_actions_t&, int) {
    return 0;
}

ChildExitWatch::ChildExitWatch(pid_t pid) {
    // pidfd_open has no glibc wrapper before 2.36; the syscall is there from Linux 5.3.
    const long fd = syscall(SYS_pidfd_open, pid, 0);
    if (fd < 0) {
        throw std::system_error(errno, std::generic_category());
    }
    fd_ = static_cast<int>(fd);
    fcntl(fd_, F_SETFD, FD_CLOEXEC);
}

ChildExitWatch::~ChildExitWatch() {
    if (fd_ >= 0) {
        close(fd_);
    }
}

} // namespace korvane::detail
