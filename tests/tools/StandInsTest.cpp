// The ditto and plutil stand-ins, run the way the generator runs them; the
// generation run and the dump reader use them where they work.

#include "base/FileIO.h"
#include "support/BuildTree.h"
#include "support/Failure.h"
#include "support/TempFolder.h"
#include "tools/ProcessRunner.h"

#include <gmock/gmock.h>

namespace korvane {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;

const ToolPaths tools = buildTreeToolPaths();

std::string toolFailure(const std::string& tool, const std::vector<std::string>& args) {
    return failureOf([&] { runProcess(tool, args, std::nullopt, 30); });
}

std::vector<std::string> dittoArgs(const fs::path& source, const fs::path& destination) {
    return {"-c", "-k", "--sequesterRsrc", "--keepParent", source.string(), destination.string()};
}

TEST(Ditto, AFailureLeavesNoHalfWrittenArchiveAndTheOldOneAsItWas) {
    TempFolder folder;
    writeFileAtomically(folder.path() / "old.zip", "previous");
    writeFileAtomically(folder.path() / "plain", "x");
    EXPECT_THAT(toolFailure(tools.ditto, dittoArgs(folder.path() / "missing", folder.path() / "old.zip")),
                HasSubstr("No such file or directory"));
    EXPECT_EQ(readFileBytes(folder.path() / "old.zip"), "previous");

    fs::create_directories(folder.path() / "work");
    toolFailure(tools.ditto, dittoArgs(folder.path() / "work", folder.path() / "plain" / "out.zip"));
    // What stands at the destination goes only when the new archive takes its place.
    fs::create_directories(folder.path() / "taken.zip");
    toolFailure(tools.ditto, dittoArgs(folder.path() / "work", folder.path() / "taken.zip"));
    EXPECT_EQ(folder.entries(), (std::vector<std::string>{"old.zip", "plain", "taken.zip", "work"}));
    EXPECT_TRUE(fs::is_directory(folder.path() / "taken.zip"));
    EXPECT_THAT(toolFailure(tools.ditto, {"-c", "-k", "a", "b"}), HasSubstr("usage: ditto -c -k"));
}

// Converting, in place and with -o, the sanitiser's and the dump reader's
// tests drive through this stand-in; a failed lint is only seen here.
TEST(Plutil, LintFailsWithTheFileNamed) {
    TempFolder folder;
    const auto broken = folder.path() / "broken.plist";
    writeFileAtomically(broken, "<?xml version=\"1.0\"?><plist version=\"1.0\"><dict><key>A</key>");
    EXPECT_THAT(toolFailure(tools.plutil, {"-lint", broken.string()}),
                testing::StartsWith("Command failed: " + tools.plutil + " -lint " + broken.string() + "\n" +
                                    broken.string()));
}

} // namespace
} // namespace korvane
