#include "tools/ChildProcess.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/event.h>
#include <system_error>
#include <unistd.h>

namespace korvane::detail {

std::array<int, 2> makeCloseOnExecPipe() {
    int fds[2];
    if (pipe(fds) != 0) {
        throw std::system_error(errno, std::generic_category());
    }
    fcntl(fds[0], F_SETFD, FD_CLOEXEC);
    fcntl(fds[1], F_SETFD, FD_CLOEXEC);
    return {fds[0], fds[1]};
}

short platformSpawnFlags() {
    return POSIX_SPAWN_CLOEXEC_DEFAULT;
}

int keepInChild(posix_spawn_file_actions_t& actions, int fd) {
    return posix_spawn_file_actions_addinherit_np(&actions, fd);
}

// A kqueue descriptor is readable while it holds a pending event, so polling it
// waits for the process's exit note.
ChildExitWatch::ChildExitWatch(pid_t pid) {
    fd_ = kqueue();
    if (fd_ < 0) {
        throw std::system_error(errno, std::generic_category());
    }
    fcntl(fd_, F_SETFD, FD_CLOEXEC);
    struct kevent change;
    EV_SET(&change, pid, EVFILT_PROC, EV_ADD | EV_ONESHOT, NOTE_EXIT, 0, nullptr);
    if (kevent(fd_, &change, 1, nullptr, 0, nullptr) == 0) {
        return;
    }
    // A child that has already ended can't be watched any more: raise a user
    // event instead so the descriptor is readable at once.
    if (errno == ESRCH) {
        struct kevent ended[2];
        EV_SET(&ended[0], 1, EVFILT_USER, EV_ADD | EV_ONESHOT, 0, 0, nullptr);
        EV_SET(&ended[1], 1, EVFILT_USER, 0, NOTE_TRIGGER, 0, nullptr);
        if (kevent(fd_, ended, 2, nullptr, 0, nullptr) == 0) {
            return;
        }
    }
    {
        const int error = errno;
        close(fd_);
        fd_ = -1;
        throw std::system_error(error, std::generic_category());
    }
}

ChildExitWatch::~ChildExitWatch() {
    if (fd_ >= 0) {
        close(fd_);
    }
}

} // namespace korvane::detail
