#include "PackageTestSupport.h"
#include "package/OutputSanitizer.h"
#include "support/BuildTree.h"
#include "support/TempFolder.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

namespace korvane {
namespace {

namespace fs = std::filesystem;

const std::string serialLine = "SerialNumber: C02XK1ABJHD3\n";
const std::string maskedLine = "SerialNumber: XX-MASKED-XX\n";

class OutputSanitizerTest : public ::testing::Test {
  protected:
    void write(const std::string& name, const std::string& bytes) { writeFileAtomically(root / name, bytes); }

    TempFolder work;
    const fs::path& root = work.path();
    std::string plutil = buildTreeToolPaths().plutil;
};

TEST_F(OutputSanitizerTest, MasksTextLikeFilesAtAnyDepthButNoHiddenOnes) {
    for (const auto* folder : {"sub/deeper", ".hidden", "folder.txt"}) {
        fs::create_directories(root / folder);
    }
    const std::pair<std::string, bool> files[] = {
        {"report.TXT", true}, {"sub/deeper/run.log", true}, {"folder.txt/inside.txt", true},
        {"notes.md", false},  {".secret.txt", false},       {".hidden/in.txt", false}};
    for (const auto& [name, isMasked] : files) {
        write(name, serialLine);
    }
    ASSERT_EQ(mkfifo((root / "a-pipe.txt").c_str(), 0600), 0) << "a pipe must not block the walk";
    sanitizeDirectory(root, plutil);
    for (const auto& [name, isMasked] : files) {
        EXPECT_EQ(fileText(root / name), isMasked ? maskedLine : serialLine) << name;
    }
}

TEST_F(OutputSanitizerTest, PropertyListsComeOutAsMaskedXMLAndOtherFilesAsTheyCan) {
    PlistPtr tree(plist_new_dict());
    plist_dict_set_item(tree.get(), "IOPlatformSerialNumber", plist_new_string("C02XK1ABJHD3"));
    char* bytes = nullptr;
    std::uint32_t length = 0;
    plist_to_bin(tree.get(), &bytes, &length);
    write("Info.plist", std::string(bytes, length));
    std::free(bytes);
    write("profile.xml", "<broken>\n" + serialLine);
    const std::string mixed = serialLine + "experience\xD5s iMac\n";
    write("mixed.txt", mixed);

    sanitizeDirectory(root, plutil);

    EXPECT_EQ(plistText(parsePropertyList(fileText(root / "Info.plist")).get()),
              "{\n  IOPlatformSerialNumber = \"XX-MASKED-XX\"\n}");
    EXPECT_EQ(fileText(root / "profile.xml"), "<broken>\n" + maskedLine) << "unconvertible: masked as text";
    EXPECT_EQ(fileText(root / "mixed.txt"), mixed) << "not UTF-8: left byte for byte";
}

TEST_F(OutputSanitizerTest, OnlyTheSingleFileFormReportsAFailedWrite) {
    write("plain.txt", serialLine);
    EXPECT_NO_THROW(sanitizeDirectory(root / "missing", plutil));
    EXPECT_NO_THROW(sanitizeDirectory(root / "plain.txt", plutil));
    // procfs takes no new files, not even from root, so the atomic write's
    // temporary file can't be made beside the target.
    EXPECT_THROW(sanitizeTextLikeFile("/proc/self/status", plutil), std::system_error);
}

} // namespace
} // namespace korvane
