#include "base/FileIO.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace korvane {

std::optional<std::string> readFileBytes(const std::filesystem::path& path) {
    const int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) {
        return std::nullopt;
    }
    std::optional<std::string> bytes;
    struct stat info;
    if (fstat(fd, &info) == 0 && !S_ISDIR(info.st_mode)) {
        bytes.emplace();
        // Growing by doubling would hold the old and the new buffer at once:
        // half again the size of a large file at the peak.
        if (S_ISREG(info.st_mode) && info.st_size > 0) {
            bytes->reserve(static_cast<std::size_t>(info.st_size));
        }
        char chunk[65536];
        for (;;) {
            const ssize_t n = read(fd, chunk, sizeof chunk);
            if (n > 0) {
                bytes->append(chunk, static_cast<std::size_t>(n));
            } else if (n == 0) {
                break;
            } else if (errno != EINTR) {
                bytes.reset();
                break;
            }
        }
    }
    close(fd);
    return bytes;
}

namespace {

[[noreturn]] void fail(int error) {
    throw std::system_error(error, std::generic_category());
}

mode_t modeForNewFile() {
    const mode_t mask = umask(0);
    umask(mask);
    return 0666 & ~mask;
}

} // namespace

void writeFileAtomically(const std::filesystem::path& path, std::string_view bytes) {
    std::string temporary = path.string() + ".XXXXXX";
    const int fd = mkstemp(temporary.data());
    if (fd < 0) {
        fail(errno);
    }
    auto abandon = [&](int error) {
        close(fd);
        unlink(temporary.c_str());
        fail(error);
    };

    struct stat existing;
    const mode_t mode = stat(path.c_str(), &existing) == 0 ? (existing.st_mode & 07777) : modeForNewFile();
    if (fchmod(fd, mode) != 0) {
        abandon(errno);
    }
    const char* data = bytes.data();
    std::size_t left = bytes.size();
    while (left > 0) {
        const ssize_t n = write(fd, data, left);
        if (n < 0) {
            if (errno == EINTR) {
                continue;
            }
            abandon(errno);
        }
        data += n;
        left -= static_cast<std::size_t>(n);
    }
    if (fsync(fd) != 0) {
        abandon(errno);
    }
    if (close(fd) != 0) {
        const int error = errno;
        unlink(temporary.c_str());
        fail(error);
    }
    if (rename(temporary.c_str(), path.c_str()) != 0) {
        const int error = errno;
        unlink(temporary.c_str());
        fail(error);
    }
}

} // namespace korvane
