#include "base/FileIO.h"

#include "support/TempFolder.h"

#include <csignal>
#include <gmock/gmock.h>
#include <sys/resource.h>
#include <system_error>

namespace korvane {
namespace {

TEST(FileIO, AtomicWriteReplacesWholeKeepsTheModeAndLeavesNoTemporary) {
    TempFolder folder;
    const auto target = folder.path() / "log.txt";
    writeFileAtomically(target, "first");
    std::filesystem::permissions(target, std::filesystem::perms(0640));
    writeFileAtomically(target, "second");
    EXPECT_EQ(readFileBytes(target), "second");
    EXPECT_EQ(std::filesystem::status(target).permissions(), std::filesystem::perms(0640));
    EXPECT_EQ(folder.entries(), std::vector<std::string>{"log.txt"});
}

TEST(FileIO, AWriteThatCantHappenThrowsThePlatformsWordsAndLeavesNothing) {
    TempFolder folder;
    writeFileAtomically(folder.path() / "plain", "x");
    EXPECT_THAT([&] { writeFileAtomically(folder.path() / "plain" / "below.txt", "y"); },
                testing::ThrowsMessage<std::system_error>(testing::StrEq("Not a directory")));
    std::filesystem::create_directory(folder.path() / "folder");
    EXPECT_THROW(writeFileAtomically(folder.path() / "folder", "z"), std::system_error);
    EXPECT_EQ(folder.entries(), (std::vector<std::string>{"folder", "plain"}));
    EXPECT_FALSE(readFileBytes(folder.path() / "folder")) << "a folder is not a file";
}

// Runs in a child process: a file size limit makes write() fail (EFBIG), as
// a full disk would, and the process's limit must not reach other tests.
[[noreturn]] void writePastAFileSizeLimit(const std::filesystem::path& folder) {
    signal(SIGXFSZ, SIG_IGN);
    const rlimit limit{1024, 1024};
    setrlimit(RLIMIT_FSIZE, &limit);
    try {
        writeFileAtomically(folder / "big", std::string(4096, 'x'));
    } catch (const std::system_error&) {
        std::_Exit(std::filesystem::is_empty(folder) ? 0 : 1);
    }
    std::_Exit(2);
}

TEST(FileIO, AWriteThatFailsHalfwayRemovesItsTemporaryFile) {
    TempFolder folder;
    EXPECT_EXIT(writePastAFileSizeLimit(folder.path()), testing::ExitedWithCode(0), "");
}

} // namespace
} // namespace korvane
