#include "PackageTestSupport.h"
#include "package/OutputSanitizer.h"
#include "support/BuildTree.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

namespace korvane {
namespace {

using namespace korvane;
namespace fs = std::filesystem;

const std::string serialLine = "SerialNumber: C02XK1ABJHD3\n";
const std::string maskedLine = "SerialNumber: XX-MASKED-XX\n";

class OutputSanitizerTest : public ::testing::Test {
  protected:
    void SetUp() override {
        if (!fs::exists(plutil)) {
            GTEST_SKIP() << "the plutil stand-in is not built at " << plutil;
        }
    }

    TemporaryFolder work;
    const fs::path& root = work.path();
    std::string plutil = buildTreeToolPaths().plutil;
};

TEST_F(OutputSanitizerTest, MasksTextLikeFilesAtAnyDepthAndNothingElse) {
    for (const auto* folder : {"sub/deeper", ".hidden", "folder.txt"}) {
        fs::create_directories(root / folder);
    }
    const std::vector<std::pair<std::string, bool>> files = {{"report.TXT", true},
                                                             {"sub/deeper/run.log", true},
                                                             {"folder.txt/inside.txt", true},
                                                             {"notes.md", false},
                                                             {"README", false},
                                                             {".secret.txt", false},
                                                             {".hidden/in.txt", false}};
    for (const auto& [name, masked] : files) {
        writeFile(root / name, serialLine);
    }
    ASSERT_EQ(mkfifo((root / "a-pipe.txt").c_str(), 0600), 0) << "a pipe must not block the walk";

    sanitizeDirectory(root, plutil);

    for (const auto& [name, masked] : files) {
        EXPECT_EQ(fileText(root / name), masked ? maskedLine : serialLine) << name;
    }
}

TEST_F(OutputSanitizerTest, BinaryPropertyListComesOutAsMaskedXML) {
    PlistPtr tree(plist_new_dict());
    plist_dict_set_item(tree.get(), "IOPlatformSerialNumber", plist_new_string("C02XK1ABJHD3"));
    plist_dict_set_item(tree.get(), "CFBundleName", plist_new_string("Korvane"));
    char* bytes = nullptr;
    std::uint32_t length = 0;
    plist_to_bin(tree.get(), &bytes, &length);
    writeFile(root / "Info.plist", std::string(bytes, length));
    plist_to_bin_free(bytes);

    sanitizeDirectory(root, plutil);

    const std::string text = fileText(root / "Info.plist");
    EXPECT_TRUE(text.starts_with("<?xml")) << text;
    EXPECT_EQ(describe(parsePropertyList(text).get()),
              R"({CFBundleName="Korvane", IOPlatformSerialNumber="XX-MASKED-XX"})");
}

TEST_F(OutputSanitizerTest, UnconvertibleFilesAreMaskedAsTextAndNonUTF8OnesLeftAlone) {
    writeFile(root / "profile.xml", "<broken>\n" + serialLine);
    const std::string mixed = serialLine + "experience\xD5s iMac\n";
    writeFile(root / "mixed.txt", mixed);
    writeFile(root / "lost.plist", "<plist><dict><key>ROM</key><string>C02</string></dict></plist>");

    sanitizeDirectory(root, plutil);
    sanitizeTextLikeFile(root / "lost.plist", (root / "missing-plutil").string());

    EXPECT_EQ(fileText(root / "profile.xml"), "<broken>\n" + maskedLine);
    EXPECT_EQ(fileText(root / "mixed.txt"), mixed) << "not UTF-8: byte for byte";
    EXPECT_NE(fileText(root / "lost.plist").find("<string>XX-MASKED-XX</string>"), std::string::npos);
}

TEST_F(OutputSanitizerTest, OnlyTheSingleFileFormReportsAFailedWrite) {
    writeFile(root / "plain.txt", serialLine);
    EXPECT_NO_THROW(sanitizeDirectory(root / "missing", plutil));
    EXPECT_NO_THROW(sanitizeDirectory(root / "plain.txt", plutil));
    // procfs takes no new files, not even from root, so the atomic write's
    // temporary file can't be made beside the target.
    if (fs::exists("/proc/self/status")) {
        EXPECT_THROW(sanitizeTextLikeFile("/proc/self/status", plutil), std::system_error);
    }
}

} // namespace
} // namespace korvane
