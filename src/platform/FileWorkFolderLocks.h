#pragma once

#include "collector/WorkFolderLocks.h"

#include <filesystem>

namespace korvane {

// Work folder locks as advisory locks (flock) on small files in `folder`, one
// per work folder, named after a hash of its absolute path. They live outside
// the Desktop so that locking leaves nothing new there, and the system drops
// a lock when its process ends, however it ends, so a crashed run never
// blocks the next. The files themselves stay: removing a lock file while
// another process waits on it would let a third run in beside the second.
class FileWorkFolderLocks final : public WorkFolderLocks {
  public:
    explicit FileWorkFolderLocks(std::filesystem::path folder) : folder_(std::move(folder)) {}

    std::unique_ptr<WorkFolderLock> tryLock(const std::filesystem::path& workFolder) override;
    std::unique_ptr<WorkFolderLock> lock(const std::filesystem::path& workFolder) override;

    // The lock file of a work folder.
    std::filesystem::path lockFile(const std::filesystem::path& workFolder) const;

  private:
    std::unique_ptr<WorkFolderLock> take(const std::filesystem::path& workFolder, bool shouldWait);

    std::filesystem::path folder_;
};

} // namespace korvane
