#pragma once

#include <filesystem>
#include <memory>

namespace korvane {

// A held lock on one work folder; destroying it lets go.
class WorkFolderLock {
  public:
    virtual ~WorkFolderLock() = default;
};

// Keeps generation runs on one Desktop apart: this process's and other
// processes' alike, so two runs never write, zip or remove one work folder at
// the same time.
//
// Contract: called on a run's background task, with the work folder's path
// (which need not exist). tryLock returns at once: a held lock, or nullptr
// while another run holds it. lock waits for that run to let go. Both throw a
// CollectorError with the platform's words when no lock can be made at all.
// A lock is released when its holder is destroyed or its process ends,
// however it ends.
class WorkFolderLocks {
  public:
    virtual ~WorkFolderLocks() = default;
    virtual std::unique_ptr<WorkFolderLock> tryLock(const std::filesystem::path& workFolder) = 0;
    virtual std::unique_ptr<WorkFolderLock> lock(const std::filesystem::path& workFolder) = 0;
};

} // namespace korvane
