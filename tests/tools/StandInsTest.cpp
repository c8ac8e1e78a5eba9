// The ditto and plutil stand-ins, run the way the generator runs them; the
// generation run and the dump reader use them where they work.

#include "records/CollectorError.h"
#include "records/FileIO.h"
#include "support/BuildTree.h"
#include "support/TempFolder.h"
#include "tools/ProcessRunner.h"
#include "tools/PropertyList.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace korvane {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::StartsWith;

const ToolPaths tools = buildTreeToolPaths();

std::string failureOf(const std::string& tool, const std::vector<std::string>& args) {
    try {
        runProcess(tool, args, std::nullopt, 30);
    } catch (const CollectorError& error) {
        return error.description();
    }
    ADD_FAILURE() << "expected " << tool << " to fail";
    return {};
}

std::vector<std::string> dittoArgs(const fs::path& source, const fs::path& destination) {
    return {"-c", "-k", "--sequesterRsrc", "--keepParent", source.string(), destination.string()};
}

TEST(Ditto, AFailureLeavesNoHalfWrittenArchiveAndTheOldOneAsItWas) {
    TempFolder folder;
    writeFileAtomically(folder.path() / "old.zip", "previous");
    writeFileAtomically(folder.path() / "plain", "x");
    EXPECT_THAT(failureOf(tools.ditto, dittoArgs(folder.path() / "missing", folder.path() / "old.zip")),
                HasSubstr("No such file or directory"));
    EXPECT_EQ(readFileBytes(folder.path() / "old.zip"), "previous");

    fs::create_directories(folder.path() / "work");
    failureOf(tools.ditto, dittoArgs(folder.path() / "work", folder.path() / "plain" / "out.zip"));
    EXPECT_EQ(folder.entries(), (std::vector<std::string>{"old.zip", "plain", "work"}));
    EXPECT_THAT(failureOf(tools.ditto, {"-c", "-k", "a", "b"}), HasSubstr("usage: ditto -c -k"));
}

std::string binaryPlist() {
    PlistPtr root(plist_new_dict());
    plist_dict_set_item(root.get(), "USB Serial Number", plist_new_string("ABC123"));
    char* bytes = nullptr;
    uint32_t length = 0;
    plist_to_bin(root.get(), &bytes, &length);
    std::string result(bytes, length);
    free(bytes);
    return result;
}

TEST(Plutil, LintFailsWithTheFileNamedAndConvertRewritesOnlyPropertyLists) {
    TempFolder folder;
    const auto broken = folder.path() / "broken.plist";
    writeFileAtomically(broken, "<?xml version=\"1.0\"?><plist version=\"1.0\"><dict><key>A</key>");
    EXPECT_THAT(
        failureOf(tools.plutil, {"-lint", broken.string()}),
        StartsWith("Command failed: " + tools.plutil + " -lint " + broken.string() + "\n" + broken.string()));

    const auto binary = folder.path() / "a.plist";
    writeFileAtomically(binary, binaryPlist());
    runProcess(tools.plutil,
               {"-convert", "xml1", binary.string(), "-o", (folder.path() / "b.plist").string()},
               std::nullopt, 60);
    EXPECT_EQ(readFileBytes(binary), binaryPlist()) << "-o leaves the source alone";
    runProcess(tools.plutil, {"-convert", "xml1", binary.string()}, std::nullopt, 60);
    for (const auto& name : {"a.plist", "b.plist"}) {
        EXPECT_THAT(readFileBytes(folder.path() / name).value_or(""), HasSubstr("<string>ABC123</string>"));
    }

    const auto text = folder.path() / "notes.plist";
    writeFileAtomically(text, "not a property list \xd5");
    failureOf(tools.plutil, {"-convert", "xml1", text.string()});
    EXPECT_EQ(readFileBytes(text), "not a property list \xd5");
    EXPECT_EQ(folder.entries(),
              (std::vector<std::string>{"a.plist", "b.plist", "broken.plist", "notes.plist"}));
}

} // namespace
} // namespace korvane
