// The ditto and plutil stand-ins, run the way the generator runs them.

#include "records/CollectorError.h"
#include "records/FileIO.h"
#include "support/BuildTree.h"
#include "support/TempFolder.h"
#include "tools/ProcessRunner.h"
#include "tools/PropertyList.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <map>
#include <sys/stat.h>
#include <zip.h>

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

struct ZipEntry {
    std::string contents;
    unsigned mode = 0;
    bool operator==(const ZipEntry&) const = default;
};

std::map<std::string, ZipEntry> readZip(const fs::path& path) {
    int error = 0;
    zip_t* archive = zip_open(path.c_str(), ZIP_RDONLY, &error);
    if (!archive) {
        ADD_FAILURE() << "not a readable zip: " << path;
        return {};
    }
    std::map<std::string, ZipEntry> entries;
    for (zip_int64_t i = 0; i < zip_get_num_entries(archive, 0); ++i) {
        const auto index = static_cast<zip_uint64_t>(i);
        ZipEntry entry;
        zip_uint8_t system = 0;
        zip_uint32_t attributes = 0;
        zip_file_get_external_attributes(archive, index, 0, &system, &attributes);
        entry.mode = attributes >> 16;
        zip_stat_t stat;
        zip_stat_index(archive, index, 0, &stat);
        if (zip_file_t* file = zip_fopen_index(archive, index, 0)) {
            entry.contents.resize(stat.size);
            zip_fread(file, entry.contents.data(), stat.size);
            zip_fclose(file);
        }
        entries[zip_get_name(archive, index, 0)] = entry;
    }
    zip_close(archive);
    return entries;
}

std::vector<std::string> dittoArgs(const fs::path& source, const fs::path& destination) {
    return {"-c", "-k", "--sequesterRsrc", "--keepParent", source.string(), destination.string()};
}

TEST(DittoTest, ZipsTheFolderItselfWithEverythingBelowAndTheModes) {
    TempFolder folder;
    const auto work = folder.path() / "KorvaneGenerator_Work";
    fs::create_directories(work / "Korvane.kext" / "Contents");
    fs::create_directories(work / "empty");
    writeFileAtomically(work / "Korvane.kext" / "Contents" / "Info.plist", "<plist/>");
    writeFileAtomically(work / "report.txt", std::string(100000, 'r'));
    chmod((work / "report.txt").c_str(), 0600);
    writeFileAtomically(work / "run.sh", "#!/bin/sh\n");
    chmod((work / "run.sh").c_str(), 0755);
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
                                     "KorvaneGenerator_Work/empty/", "KorvaneGenerator_Work/link",
                                     "KorvaneGenerator_Work/report.txt", "KorvaneGenerator_Work/run.sh"));
    EXPECT_EQ(entries.at("KorvaneGenerator_Work/Korvane.kext/Contents/Info.plist").contents, "<plist/>");
    EXPECT_EQ(entries.at("KorvaneGenerator_Work/report.txt"),
              (ZipEntry{std::string(100000, 'r'), S_IFREG | 0600}));
    EXPECT_EQ(entries.at("KorvaneGenerator_Work/run.sh").mode, unsigned(S_IFREG | 0755));
    EXPECT_EQ(entries.at("KorvaneGenerator_Work/link"), (ZipEntry{"report.txt", S_IFLNK | 0777}));
    EXPECT_TRUE(S_ISDIR(entries.at("KorvaneGenerator_Work/empty/").mode));
}

TEST(DittoTest, FailureLeavesNoHalfWrittenArchive) {
    TempFolder folder;
    writeFileAtomically(folder.path() / "old.zip", "previous");
    writeFileAtomically(folder.path() / "plain", "x");

    EXPECT_THAT(failureOf(tools.ditto, dittoArgs(folder.path() / "missing", folder.path() / "old.zip")),
                HasSubstr("No such file or directory"));
    EXPECT_EQ(readFileBytes(folder.path() / "old.zip"), "previous");

    fs::create_directories(folder.path() / "work");
    failureOf(tools.ditto, dittoArgs(folder.path() / "work", folder.path() / "plain" / "out.zip"));
    EXPECT_EQ(folder.entries(), (std::vector<std::string>{"old.zip", "plain", "work"}));
}

TEST(DittoTest, OtherArgumentFormsGetUsage) {
    EXPECT_THAT(failureOf(tools.ditto, {"-x", "a", "b"}), HasSubstr("usage: ditto -c -k"));
    EXPECT_THAT(failureOf(tools.ditto, {"-c", "-k", "a", "b"}), HasSubstr("usage: ditto -c -k"));
}

std::string binaryPlist() {
    PlistPtr root(plist_new_dict());
    plist_dict_set_item(root.get(), "USB Serial Number", plist_new_string("ABC123"));
    plist_dict_set_item(root.get(), "port", plist_new_data("\x01\x00\x00\x00", 4));
    char* bytes = nullptr;
    uint32_t length = 0;
    plist_to_bin(root.get(), &bytes, &length);
    std::string result(bytes, length);
    free(bytes);
    return result;
}

TEST(PlutilTest, LintSaysOKForXMLAndBinaryAndFailsOnAnythingElse) {
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
    EXPECT_THAT(failureOf(tools.plutil, {"-lint", (folder.path() / "missing").string()}),
                HasSubstr("missing"));
}

TEST(PlutilTest, ConvertRewritesAsXMLInPlaceOrIntoAnotherFile) {
    TempFolder folder;
    const auto binary = folder.path() / "a.plist";
    writeFileAtomically(binary, binaryPlist());

    runProcess(tools.plutil,
               {"-convert", "xml1", binary.string(), "-o", (folder.path() / "b.plist").string()},
               std::nullopt, 60);
    EXPECT_EQ(readFileBytes(binary), binaryPlist()) << "-o leaves the source alone";

    runProcess(tools.plutil, {"-convert", "xml1", binary.string()}, std::nullopt, 60);
    for (const auto& name : {"a.plist", "b.plist"}) {
        const auto text = readFileBytes(folder.path() / name).value_or("");
        EXPECT_THAT(text, StartsWith("<?xml"));
        EXPECT_THAT(text, HasSubstr("<string>ABC123</string>"));
        EXPECT_THAT(text, HasSubstr("AQAAAA=="));
    }
    EXPECT_EQ(folder.entries(), (std::vector<std::string>{"a.plist", "b.plist"}));
}

TEST(PlutilTest, ConvertLeavesANonPropertyListUntouched) {
    TempFolder folder;
    const auto text = folder.path() / "notes.plist";
    writeFileAtomically(text, "not a property list \xd5");
    failureOf(tools.plutil, {"-convert", "xml1", text.string()});
    EXPECT_EQ(readFileBytes(text), "not a property list \xd5");
    EXPECT_THAT(failureOf(tools.plutil, {"-convert", "json", text.string()}), HasSubstr("usage: plutil"));
}

} // namespace
} // namespace korvane
