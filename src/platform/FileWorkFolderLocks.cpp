#include "platform/FileWorkFolderLocks.h"

#include "records/CollectorError.h"

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <fcntl.h>
#include <sys/file.h>
#include <system_error>
#include <unistd.h>

namespace korvane {

namespace fs = std::filesystem;

namespace {

class FileLock final : public WorkFolderLock {
  public:
    explicit FileLock(int descriptor) : descriptor_(descriptor) {}
    ~FileLock() override { ::close(descriptor_); } // closing releases the lock

    FileLock(const FileLock&) = delete;
    FileLock& operator=(const FileLock&) = delete;

  private:
    int descriptor_;
};

// 64-bit FNV-1a: stable across builds and processes, unlike std::hash, so
// every build of the program finds the same file for one folder.
std::uint64_t stableHash(const std::string& text) {
    std::uint64_t hash = 0xcbf29ce484222325u;
    for (unsigned char c : text) {
        hash = (hash ^ c) * 0x100000001b3u;
    }
    return hash;
}

[[noreturn]] void failLocking(const fs::path& file, int error) {
    throw CollectorError::operationFailed("Could not lock " + file.string() + ": " +
                                          std::generic_category().message(error));
}

} // namespace

fs::path FileWorkFolderLocks::lockFile(const fs::path& workFolder) const {
    // One Desktop reached through a link or a relative path is still one
    // Desktop: name the folder the way the system resolves it.
    std::error_code error;
    fs::path resolved = fs::weakly_canonical(workFolder, error);
    if (error) {
        resolved = fs::absolute(workFolder, error).lexically_normal();
    }
    char name[32];
    std::snprintf(name, sizeof name, "work-%016llx.lock",
                  static_cast<unsigned long long>(stableHash(resolved.string())));
    return folder_ / name;
}

std::unique_ptr<WorkFolderLock> FileWorkFolderLocks::tryLock(const fs::path& workFolder) {
    return take(workFolder, false);
}

std::unique_ptr<WorkFolderLock> FileWorkFolderLocks::lock(const fs::path& workFolder) {
    return take(workFolder, true);
}

std::unique_ptr<WorkFolderLock> FileWorkFolderLocks::take(const fs::path& workFolder, bool shouldWait) {
    const fs::path file = lockFile(workFolder);
    std::error_code error;
    fs::create_directories(folder_, error);
    if (error) {
        failLocking(file, error.value());
    }
    // flock needs no write access: a lock file a run under sudo made stays
    // usable by the user's own runs.
    const int descriptor = ::open(file.c_str(), O_RDONLY | O_CREAT | O_CLOEXEC, 0644);
    if (descriptor < 0) {
        failLocking(file, errno);
    }
    auto lock = std::make_unique<FileLock>(descriptor);
    while (::flock(descriptor, LOCK_EX | (shouldWait ? 0 : LOCK_NB)) != 0) {
        if (errno == EINTR) {
            continue;
        }
        if (errno == EWOULDBLOCK && !shouldWait) {
            return nullptr;
        }
        failLocking(file, errno);
    }
    return lock;
}

} // namespace korvane
