// The ditto and plutil stand-ins, run the way the generator runs them; the
// generation run and the dump reader use them where they work.

#include "records/FileIO.h"
#include "support/BinaryPlist.h"
#include "support/BuildTree.h"
#include "support/Failure.h"
#include "support/TempFolder.h"
#include "tools/ProcessRunner.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace korvane {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::StartsWith;

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
    EXPECT_EQ(folder.entries(), (std::vector<std::string>{"old.zip", "plain", "work"}));
    EXPECT_THAT(toolFailure(tools.ditto, {"-c", "-k", "a", "b"}), HasSubstr("usage: ditto -c -k"));
}

TEST(Plutil, LintFailsWithTheFileNamedAndConvertRewritesOnlyPropertyLists) {
    TempFolder folder;
    const auto broken = folder.path() / "broken.plist";
    writeFileAtomically(broken, "<?xml version=\"1.0\"?><plist version=\"1.0\"><dict><key>A</key>");
    EXPECT_THAT(
        toolFailure(tools.plutil, {"-lint", broken.string()}),
        StartsWith("Command failed: " + tools.plutil + " -lint " + broken.string() + "\n" + broken.string()));

    const auto binary = folder.path() / "a.plist";
    writeFileAtomically(binary, binaryPlist("USB Serial Number", "ABC123"));
    runProcess(tools.plutil,
               {"-convert", "xml1", binary.string(), "-o", (folder.path() / "b.plist").string()},
               std::nullopt, 60);
    EXPECT_EQ(readFileBytes(binary), binaryPlist("USB Serial Number", "ABC123"))
        << "-o leaves the source alone";
    runProcess(tools.plutil, {"-convert", "xml1", binary.string()}, std::nullopt, 60);
    for (const auto& name : {"a.plist", "b.plist"}) {
        EXPECT_THAT(readFileBytes(folder.path() / name).value_or(""), HasSubstr("<string>ABC123</string>"));
    }

    const auto text = folder.path() / "notes.plist";
    writeFileAtomically(text, "not a property list \xd5");
    toolFailure(tools.plutil, {"-convert", "xml1", text.string()});
    EXPECT_EQ(readFileBytes(text), "not a property list \xd5");
    EXPECT_EQ(folder.entries(),
              (std::vector<std::string>{"a.plist", "b.plist", "broken.plist", "notes.plist"}));
}

} // namespace
} // namespace korvane
