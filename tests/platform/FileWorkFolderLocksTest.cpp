#include "platform/FileWorkFolderLocks.h"

#include "base/FileIO.h"
#include "support/Failure.h"
#include "support/TempFolder.h"

#include <gtest/gtest.h>

namespace korvane {
namespace {

namespace fs = std::filesystem;

TEST(FileWorkFolderLocks, OneWorkFolderHasOneHolderHoweverItsPathIsWritten) {
    TempFolder home;
    fs::create_directories(home.path() / "Desktop");
    fs::create_directory_symlink(home.path() / "Desktop", home.path() / "Linked");
    FileWorkFolderLocks locks(home.path() / "locks");
    const fs::path work = home.path() / "Desktop" / "KorvaneGenerator_Work";

    auto held = locks.tryLock(work);
    ASSERT_NE(held, nullptr);
    EXPECT_EQ(locks.tryLock(work), nullptr);
    EXPECT_EQ(locks.tryLock(home.path() / "Linked" / "KorvaneGenerator_Work"), nullptr);
    EXPECT_NE(locks.tryLock(home.path() / "Other" / "KorvaneGenerator_Work"), nullptr);
    held.reset();
    EXPECT_NE(locks.lock(work), nullptr);
    EXPECT_FALSE(fs::exists(work)) << "nothing on the Desktop";

    writeFileAtomically(home.path() / "file", "");
    FileWorkFolderLocks unusable(home.path() / "file" / "locks");
    EXPECT_EQ(failureOf([&] { unusable.tryLock(work); }),
              "Could not lock " + unusable.lockFile(work).string() + ": Not a directory");
}

} // namespace
} // namespace korvane
