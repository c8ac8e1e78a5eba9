#include "tools/ProcessRunner.h"

#include "base/Text.h"
#include "records/CollectorError.h"
#include "tools/ChildProcess.h"

#include <cerrno>
#include <chrono>
#include <cmath>
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <system_error>
#include <thread>
#include <unistd.h>

extern char** environ;

namespace korvane {

namespace {

using Clock = std::chrono::steady_clock;

constexpr auto terminateGrace = std::chrono::seconds(2);
// After a normal exit the pipe is read to its end; a grandchild that keeps it
// open must not hold the caller forever.
constexpr auto finalDrainBound = std::chrono::seconds(2);

class FileDescriptor {
  public:
    explicit FileDescriptor(int fd = -1) : fd_(fd) {}
    ~FileDescriptor() { reset(); }
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;

    int get() const { return fd_; }
    void reset() {
        if (fd_ >= 0) {
            close(fd_);
            fd_ = -1;
        }
    }

  private:
    int fd_;
};

template <typename T, int (*destroy)(T*)> struct SpawnObject {
    T value;
    explicit SpawnObject(int (*init)(T*)) {
        if (int error = init(&value); error != 0) {
            throw std::system_error(error, std::generic_category());
        }
    }
    ~SpawnObject() { destroy(&value); }
    SpawnObject(const SpawnObject&) = delete;
    SpawnObject& operator=(const SpawnObject&) = delete;
};

void check(int error) {
    if (error != 0) {
        throw std::system_error(error, std::generic_category());
    }
}

std::string joinedArguments(const std::vector<std::string>& args) {
    return joined(args, " ");
}

pid_t spawn(const std::string& path, const std::vector<std::string>& args,
            const std::optional<std::filesystem::path>& currentDirectory, int outputFd, ChildInput input) {
    SpawnObject<posix_spawn_file_actions_t, posix_spawn_file_actions_destroy> actions(
        posix_spawn_file_actions_init);
    if (input == ChildInput::none) {
        check(posix_spawn_file_actions_addopen(&actions.value, STDIN_FILENO, "/dev/null", O_RDONLY, 0));
    } else {
        check(detail::keepInChild(actions.value, STDIN_FILENO));
    }
    check(posix_spawn_file_actions_adddup2(&actions.value, outputFd, STDOUT_FILENO));
    check(posix_spawn_file_actions_adddup2(&actions.value, outputFd, STDERR_FILENO));
    if (currentDirectory) {
        check(posix_spawn_file_actions_addchdir_np(&actions.value, currentDirectory->c_str()));
    }

    // A tool must not inherit signals the application blocks or ignores: one
    // that can't be asked to stop would always run into the grace period.
    SpawnObject<posix_spawnattr_t, posix_spawnattr_destroy> attributes(posix_spawnattr_init);
    sigset_t noSignals;
    sigemptyset(&noSignals);
    sigset_t defaults;
    sigemptyset(&defaults);
    for (int signal : {SIGPIPE, SIGTERM, SIGINT, SIGHUP, SIGCHLD}) {
        sigaddset(&defaults, signal);
    }
    check(posix_spawnattr_setsigmask(&attributes.value, &noSignals));
    check(posix_spawnattr_setsigdefault(&attributes.value, &defaults));
    check(posix_spawnattr_setflags(
        &attributes.value,
        static_cast<short>(POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF | detail::platformSpawnFlags())));

    std::vector<char*> argv;
    argv.reserve(args.size() + 2);
    argv.push_back(const_cast<char*>(path.c_str()));
    for (const auto& arg : args) {
        argv.push_back(const_cast<char*>(arg.c_str()));
    }
    argv.push_back(nullptr);

    pid_t pid = 0;
    check(posix_spawn(&pid, path.c_str(), &actions.value, &attributes.value, argv.data(), environ));
    return pid;
}

int millisecondsUntil(Clock::time_point deadline) {
    const auto left = deadline - Clock::now();
    if (left <= Clock::duration::zero()) {
        return 0;
    }
    // Round up: waking a hair early would only spin once more.
    const auto ms = std::chrono::ceil<std::chrono::milliseconds>(left).count();
    return ms > INT32_MAX ? INT32_MAX : static_cast<int>(ms);
}

// Reads whatever is waiting into `output`. Returns false at end of file.
bool readAvailable(int fd, std::string& output) {
    char chunk[65536];
    for (;;) {
        const ssize_t n = read(fd, chunk, sizeof chunk);
        if (n > 0) {
            output.append(chunk, static_cast<std::size_t>(n));
            return true;
        }
        if (n < 0 && errno == EINTR) {
            continue;
        }
        return false;
    }
}

// Collects output until the child ends or the deadline passes; true if it ended.
bool collectUntilExit(int outputFd, bool& outputOpen, int exitFd, Clock::time_point deadline,
                      std::string& output) {
    for (;;) {
        pollfd fds[2] = {{exitFd, POLLIN, 0}, {outputOpen ? outputFd : -1, POLLIN, 0}};
        const int ready = poll(fds, 2, millisecondsUntil(deadline));
        if (ready < 0 && errno == EINTR) {
            continue;
        }
        if (fds[1].revents != 0 && !readAvailable(outputFd, output)) {
            outputOpen = false;
        }
        if (fds[0].revents != 0) {
            return true;
        }
        if (ready <= 0 && Clock::now() >= deadline) {
            return false;
        }
    }
}

void drainToEnd(int outputFd, Clock::time_point bound, std::string& output) {
    for (;;) {
        pollfd fd = {outputFd, POLLIN, 0};
        const int ready = poll(&fd, 1, millisecondsUntil(bound));
        if (ready < 0 && errno == EINTR) {
            continue;
        }
        if (ready <= 0 || !readAvailable(outputFd, output)) {
            return;
        }
    }
}

int reap(pid_t pid) {
    int status = 0;
    while (waitpid(pid, &status, 0) < 0 && errno == EINTR) {
    }
    return status;
}

Clock::time_point deadlineAfter(double seconds) {
    const auto now = Clock::now();
    if (!(seconds > 0)) {
        return now;
    }
    const auto limit = std::chrono::duration_cast<Clock::duration>(std::chrono::hours(24 * 365 * 100));
    const std::chrono::duration<double> wanted(seconds);
    return wanted >= limit ? now + limit : now + std::chrono::duration_cast<Clock::duration>(wanted);
}

std::string wholeSeconds(double seconds) {
    if (std::isnan(seconds)) {
        return "0";
    }
    if (std::abs(seconds) >= 9.2e18) {
        return seconds > 0 ? "9223372036854775807" : "-9223372036854775808";
    }
    return std::to_string(static_cast<long long>(std::trunc(seconds)));
}

} // namespace

std::string runProcess(const std::string& path, const std::vector<std::string>& args,
                       const std::optional<std::filesystem::path>& currentDirectory, double timeout,
                       ChildInput input) {
    const auto pipeEnds = detail::makeCloseOnExecPipe();
    FileDescriptor readEnd(pipeEnds[0]);
    FileDescriptor writeEnd(pipeEnds[1]);

    const pid_t pid = spawn(path, args, currentDirectory, writeEnd.get(), input);
    // Only the child holds the write end from here on, so end of file means it
    // (and anything it passed the pipe to) has closed it.
    writeEnd.reset();

    std::optional<detail::ChildExitWatch> exitWatch;
    try {
        exitWatch.emplace(pid);
    } catch (...) {
        kill(pid, SIGTERM);
        std::thread([pid] { reap(pid); }).detach();
        throw;
    }

    std::string output;
    bool outputOpen = true;
    const auto deadline = deadlineAfter(timeout);
    if (!collectUntilExit(readEnd.get(), outputOpen, exitWatch->fd(), deadline, output)) {
        kill(pid, SIGTERM);
        const bool ended = collectUntilExit(readEnd.get(), outputOpen, exitWatch->fd(),
                                            Clock::now() + terminateGrace, output);
        if (ended) {
            reap(pid);
        } else {
            // It ignored the request. Leave it running, but make sure it is
            // reaped when it does end instead of lingering as a zombie.
            std::thread([pid] { reap(pid); }).detach();
        }
        throw CollectorError::operationFailed("Timeout after " + wholeSeconds(timeout) + "s: " + path + " " +
                                              joinedArguments(args) + "\n" + strictUTF8(output));
    }

    if (outputOpen) {
        drainToEnd(readEnd.get(), Clock::now() + finalDrainBound, output);
    }
    const int status = reap(pid);
    std::string text = strictUTF8(output);
    if (WIFEXITED(status) && WEXITSTATUS(status) == 0) {
        return text;
    }
    throw CollectorError::operationFailed("Command failed: " + path + " " + joinedArguments(args) + "\n" +
                                          text);
}

std::string runTool(const std::string& path, const std::vector<std::string>& args,
                    const std::optional<std::filesystem::path>& currentDirectory, double timeout) {
    try {
        return runProcess(path, args, currentDirectory, timeout);
    } catch (const std::system_error& error) {
        throw CollectorError::operationFailed("cannot start " + path + ": " + error.code().message());
    }
}

std::string runProcessCapturing(const std::string& path, const std::vector<std::string>& args,
                                double timeout) {
    try {
        return runProcess(path, args, std::nullopt, timeout);
    } catch (...) {
        return "Failure/timeout while running " + path + " " + joinedArguments(args);
    }
}

} // namespace korvane
