#include "records/FileIO.h"

#include "support/TempFolder.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <system_error>

namespace korvane {
namespace {

TEST(FileIOTest, AtomicWriteReplacesWholeAndKeepsMode) {
    TempFolder folder;
    const auto target = folder.path() / "log.txt";
    writeFileAtomically(target, "first");
    chmod(target.c_str(), 0640);
    writeFileAtomically(target, "second");
    EXPECT_EQ(readFileBytes(target), "second");
    struct stat info;
    ASSERT_EQ(stat(target.c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 0777, 0640u);
    EXPECT_EQ(folder.entries(), std::vector<std::string>{"log.txt"}) << "no temporary file is left";
}

TEST(FileIOTest, AtomicWriteBelowAFileFailsWithThePlatformsWords) {
    TempFolder folder;
    writeFileAtomically(folder.path() / "plain", "x");
    try {
        writeFileAtomically(folder.path() / "plain" / "below.txt", "y");
        FAIL() << "expected a failure";
    } catch (const std::system_error& error) {
        EXPECT_EQ(error.code(), std::errc::not_a_directory);
        EXPECT_STREQ(error.what(), "Not a directory");
    }
    EXPECT_EQ(readFileBytes(folder.path() / "plain"), "x");
}

TEST(FileIOTest, ReadingAMissingFileGivesNothing) {
    TempFolder folder;
    EXPECT_FALSE(readFileBytes(folder.path() / "missing"));
    EXPECT_FALSE(readFileBytes(folder.path())) << "a folder is not a file";
}

} // namespace
} // namespace korvane
