#include "DumpTestSupport.h"
#include "dumpscan/USBTreeScanner.h"
#include "records/FileIO.h"
#include "support/BuildTree.h"
#include "support/FakeTool.h"
#include "support/TempFolder.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>

namespace korvane {
namespace {

constexpr std::string_view plainDump = "+-o Root  <class IORegistryEntry, id 0x100000100, retain 10>\n";

class DumpReadingTest : public ::testing::Test {
  protected:
    void SetUp() override {
        std::filesystem::create_directories(temporary());
        std::filesystem::create_directories(tools());
    }
    std::filesystem::path temporary() const { return folder_.path() / "tmp"; }
    std::filesystem::path tools() const { return folder_.path() / "tools"; }

    std::filesystem::path writeFile(const std::string& name, std::string_view bytes) const {
        const auto path = folder_.path() / name;
        std::ofstream(path, std::ios::binary) << bytes;
        return path;
    }
    std::string fakeTool(const std::string& name, const std::string& script) const {
        return writeFakeTool(tools(), name, script);
    }
    std::string read(const std::filesystem::path& dump, const std::string& plutil,
                     double timeout = 15) const {
        return readIORegistryExplorerFileForScanning(dump, {plutil, timeout, temporary()});
    }
    std::vector<std::string> leftInTemporary() const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(temporary())) {
            names.push_back(entry.path().filename().string());
        }
        return names;
    }

    TempFolder folder_;
};

TEST_F(DumpReadingTest, ConvertsANamedCopyAndLeavesTheUsersFileAlone) {
    const auto dump = writeFile("IOReg.txt", plainDump);
    const auto arguments = folder_.path() / "arguments.txt";
    const std::string tool =
        fakeTool("plutil", "printf '%s\\n' \"$@\" > '" + arguments.string() + "'; exit 1");
    EXPECT_EQ(read(dump, tool), plainDump);

    const auto recorded = readFileBytes(arguments);
    ASSERT_TRUE(recorded);
    std::vector<std::string> words;
    for (std::size_t at = 0; at < recorded->size();) {
        const std::size_t end = recorded->find('\n', at);
        words.push_back(recorded->substr(at, end - at));
        at = end == std::string::npos ? recorded->size() : end + 1;
    }
    ASSERT_EQ(words.size(), 5u) << *recorded;
    EXPECT_EQ(words[0], "-convert");
    EXPECT_EQ(words[1], "xml1");
    EXPECT_EQ(words[3], "-o");
    EXPECT_EQ(words[4], words[2]);
    const std::filesystem::path copy = words[2];
    EXPECT_EQ(copy.parent_path(), temporary());
    const std::string name = copy.filename().string();
    ASSERT_TRUE(name.starts_with("Korvane_IORegScan_") && name.ends_with(".xml")) << name;
    const std::string uuid = name.substr(18, name.size() - 18 - 4);
    EXPECT_EQ(uuid.size(), 36u);
    EXPECT_EQ(uuid.find_first_not_of("0123456789ABCDEF-"), std::string::npos) << uuid;
    EXPECT_TRUE(leftInTemporary().empty());
    EXPECT_EQ(readFileBytes(dump), std::string(plainDump));
}

TEST_F(DumpReadingTest, ToolOutputReplacesTheCopy) {
    const auto dump = writeFile("dump.ioreg", "bplist00-ish");
    const std::string tool = fakeTool("plutil", "printf '<?xml version=\"1.0\"?>' > \"$5\"");
    EXPECT_EQ(read(dump, tool), "<?xml version=\"1.0\"?>");
    EXPECT_TRUE(leftInTemporary().empty());
}

TEST_F(DumpReadingTest, HangingToolTimesOutAndLeavesNoCopy) {
    const auto dump = writeFile("IOReg.txt", plainDump);
    const std::string tool = fakeTool("plutil", "exec sleep 30");
    EXPECT_EQ(read(dump, tool, 0.3), plainDump);
    EXPECT_TRUE(leftInTemporary().empty());
}

TEST_F(DumpReadingTest, MissingToolReadsTheCopyUnconverted) {
    const auto dump = writeFile("IOReg.txt", plainDump);
    EXPECT_EQ(read(dump, (tools() / "no-such-plutil").string()), plainDump);
    EXPECT_TRUE(leftInTemporary().empty());
}

TEST_F(DumpReadingTest, TextThatIsNotUTF8ReadsAsNothing) {
    const auto dump = writeFile("IOReg.txt", "+-o Root  \"BluetoothLocalName\" = \"experience\xD5s iMac\"\n");
    EXPECT_EQ(read(dump, fakeTool("plutil", "exit 1")), "");
    EXPECT_TRUE(leftInTemporary().empty());
}

TEST_F(DumpReadingTest, UncopyableDumpIsReadInPlace) {
    const auto dump = writeFile("IOReg.txt", plainDump);
    const auto plainFile = writeFile("not-a-folder", "x");
    const std::string tool = fakeTool("plutil", "exit 1");
    // The temporary folder is a plain file, so no copy can go there.
    EXPECT_EQ(readIORegistryExplorerFileForScanning(dump, {tool, 15, plainFile}), plainDump);
    const auto badDump = writeFile("bad.txt", "\xFF\xFE");
    EXPECT_EQ(readIORegistryExplorerFileForScanning(badDump, {tool, 15, plainFile}), "");
}

TEST_F(DumpReadingTest, BinaryPropertyListComesBackAsXMLWithTheRealTool) {
    const std::string plutil = buildTreeToolPaths().plutil;
    const auto dump = dumptest::dataFile("macos/iMac14-2/IORegistryExplorer.ioreg");
    if (!std::filesystem::exists(plutil) || !std::filesystem::exists(dump)) {
        GTEST_SKIP() << "needs the plutil stand-in and tests/data/macos/iMac14-2";
    }
    const std::string text = read(dump, plutil, 60);
    EXPECT_TRUE(text.starts_with("<?xml")) << text.substr(0, 80);
    EXPECT_EQ(text.find("+-o"), std::string::npos);
    EXPECT_TRUE(leftInTemporary().empty());
}

} // namespace
} // namespace korvane
