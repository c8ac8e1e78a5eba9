// The ditto and plutil stand-ins, run the way the generator runs them.

#include "records/CollectorError.h"
#include "records/FileIO.h"
#include "support/BuildTree.h"
#include "support/TempFolder.h"
#include "support/Zip.h"
#include "tools/ProcessRunner.h"
#include "tools/PropertyList.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

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

TEST(Ditto, ZipsTheFolderItselfWithEverythingBelowAndTheModes) {
    TempFolder folder;
    const auto work = folder.path() / "KorvaneGenerator_Work";
    fs::create_directories(work / "Korvane.kext" / "Contents");
    writeFileAtomically(work / "Korvane.kext" / "Contents" / "Info.plist", "<plist/>");
    writeFileAtomically(work / "report.txt", std::string(100000, 'r'));
    chmod((work / "report.txt").c_str(), 0600);
    fs::create_symlink("report.txt", work / "link");

    // Relative paths against a working folder, as the generator calls it.
    runProcess(tools.ditto, dittoArgs("KorvaneGenerator_Work", "Korvane.zip"), folder.path(), 60);

    const auto entries = readZip(folder.path() / "Korvane.zip");
    std::vector<std::string> names;
    for (const auto& [name, entry] : entries) {
        names.push_back(name);
    }
    EXPECT_THAT(names,
                testing::ElementsAre("KorvaneGenerator_Work/", "KorvaneGenerator_Work/Korvane.kext/",
                                     "KorvaneGenerator_Work/Korvane.kext/Contents/",
                                     "KorvaneGenerator_Work/Korvane.kext/Contents/Info.plist",
                                     "KorvaneGenerator_Work/link", "KorvaneGenerator_Work/report.txt"));
    EXPECT_EQ(entries.at("KorvaneGenerator_Work/report.txt"),
              (ZipEntry{std::string(100000, 'r'), S_IFREG | 0600}));
    EXPECT_EQ(entries.at("KorvaneGenerator_Work/link"), (ZipEntry{"report.txt", S_IFLNK | 0777}));
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

TEST(Plutil, LintSaysOKForXMLAndBinaryAndFailsOnAnythingElse) {
    TempFolder folder;
    const auto xml = folder.path() / "Info.plist";
    const auto binary = folder.path() / "binary.plist";
    const auto broken = folder.path() / "broken.plist";
    writeFileAtomically(
        xml, "<?xml version=\"1.0\"?><plist version=\"1.0\"><dict><key>A</key><true/></dict></plist>");
    writeFileAtomically(binary, binaryPlist());
    writeFileAtomically(broken, "<?xml version=\"1.0\"?><plist version=\"1.0\"><dict><key>A</key>");

    EXPECT_EQ(runProcess(tools.plutil, {"-lint", xml.string()}, std::nullopt, 60), xml.string() + ": OK\n");
    EXPECT_EQ(runProcess(tools.plutil, {"-lint", binary.string()}, std::nullopt, 60),
              binary.string() + ": OK\n");
    EXPECT_THAT(
        failureOf(tools.plutil, {"-lint", broken.string()}),
        StartsWith("Command failed: " + tools.plutil + " -lint " + broken.string() + "\n" + broken.string()));
}

TEST(Plutil, ConvertRewritesAsXMLInPlaceOrIntoAnotherFileAndLeavesOtherFilesAlone) {
    TempFolder folder;
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
    EXPECT_EQ(folder.entries(), (std::vector<std::string>{"a.plist", "b.plist", "notes.plist"}));
}

} // namespace
} // namespace korvane
