#include "dumpscan/USBTreeScanner.h"

#include "base/FileIO.h"
#include "support/BuildTree.h"
#include "support/FakeTool.h"
#include "support/Golden.h"
#include "support/IDsHome.h"
#include "support/RegistryTrees.h"
#include "support/ScanText.h"

#include <gtest/gtest.h>

namespace korvane {
namespace {

class USBTreeScannerTest : public ::testing::Test {
  protected:
    void SetUp() override { std::filesystem::create_directory(temporary); }
    USBTreeScanner scanner(const RegistrySource& live, std::optional<std::filesystem::path> dump,
                           IDsNameResolver* names = nullptr) {
        USBTreeScanner scanner{std::move(dump), live, names ? *names : ids.names(),
                               buildTreeToolPaths().plutil};
        scanner.temporaryFolder = temporary;
        return scanner;
    }
    std::string read(const std::filesystem::path& dump, const std::string& plutil,
                     double timeout = 15) const {
        return readIORegistryExplorerFileForScanning(dump, {plutil, timeout, temporary});
    }
    std::filesystem::path write(const std::string& name, std::string_view bytes) const {
        writeFileAtomically(ids.path() / name, bytes);
        return ids.path() / name;
    }
    bool isTemporaryEmpty() const { return std::filesystem::is_empty(temporary); }

    IDsHome ids;
    const std::filesystem::path temporary = ids.path() / "temporary";
    const TreeSource nothingLive{[] { return nullptr; }};
    const std::filesystem::path handMade = testDataPath("dumpscan/handmade-every-port-branch.txt");
    static constexpr const char* plainDump = "+-o Root  <class IORegistryEntry, id 0x100000100, retain 9>\n";
};

TEST_F(USBTreeScannerTest, TheDumpIsReadOnlyWhenTheLiveScanFindsNothing) {
    EXPECT_EQ(scanner(nothingLive, handMade).scan(), scanner(nothingLive, std::nullopt).scanDump(handMade));
    const TreeSource oneLive([] {
        auto tree = makeRoot();
        addXHCIPCIDevice(*tree, "LIVE", "1", 0x1022, 0x149c);
        return tree;
    });
    const auto live = scanner(oneLive, handMade).scan();
    ASSERT_EQ(live.controllers.size(), 1u);
    EXPECT_EQ(live.controllers[0].name, "LIVE");
    EXPECT_TRUE(scanner(nothingLive, ids.path() / "missing.txt").scan().controllers.empty());
    EXPECT_TRUE(isTemporaryEmpty());
}

TEST_F(USBTreeScannerTest, TheCorpusGivesOnlyThePCIControllersOutsideBridges) {
    // Real dumps hold the IDs on the PCI node, never on the driver node: only
    // the PCI pass finds controllers, without ports, and only those outside
    // bridges (tests/data/dumpscan/README.md has the working).
    CorpusIDsHome bundled;
    std::string text;
    for (const char* dump : {"MacBookPro15-2/IOReg.txt", "MacPro6-1/IOReg.txt", "Macmini7-1/IOReg.txt",
                             "hackintosh-CML/ioreg_ioservice.txt", "hackintosh-CML/ioreg_IOUSB-plane.txt",
                             "iMacPro1-1/IOReg.txt", "iMac19-1/IOReg.txt", "qemu-MacPro7-1/ioreg.txt",
                             "iMac14-2/IORegistryExplorer.ioreg"}) {
        const auto named = scanner(nothingLive, testDataPath(std::string("macos/") + dump), &bundled.names());
        text += std::string("== ") + dump + "\n" + scanText(named.scan());
    }
    EXPECT_TRUE(matchesGolden(text, "line-scanner/corpus.txt"));
    EXPECT_TRUE(isTemporaryEmpty());
}

TEST_F(USBTreeScannerTest, ReadingConvertsACopyTakesTheToolsOutputAndSurvivesEveryFailure) {
    const auto dump = write("IOReg.txt", plainDump);
    // A tool that converts in place and to -o: only the copy may change.
    const auto converts =
        writeFakeTool(ids.path(), "converts", "printf '<?xml' > \"$3\"; printf '<?xml' > \"$5\"");
    EXPECT_EQ(read(dump, converts), "<?xml");
    EXPECT_EQ(readFileBytes(dump), std::string(plainDump)) << "the user's file is left alone";
    EXPECT_EQ(read(dump, writeFakeTool(ids.path(), "hangs", "exec sleep 30"), 0.3), plainDump);
    EXPECT_EQ(read(dump, (ids.path() / "no-such-plutil").string()), plainDump);
    const auto refuses = writeFakeTool(ids.path(), "refuses", "exit 1");
    EXPECT_EQ(read(write("bad.txt", "+-o Root \"Name\" = \"experience\xD5s iMac\"\n"), refuses), "")
        << "text that isn't UTF-8 reads as nothing";
    EXPECT_TRUE(isTemporaryEmpty());
    // A temporary folder that is a plain file: no copy, the dump is read in place.
    EXPECT_EQ(readIORegistryExplorerFileForScanning(dump, {refuses, 15, dump}), plainDump);
}

TEST_F(USBTreeScannerTest, ABinaryPropertyListComesBackAsXMLWithTheRealTool) {
    const std::string text =
        read(testDataPath("macos/iMac14-2/IORegistryExplorer.ioreg"), buildTreeToolPaths().plutil, 60);
    EXPECT_TRUE(text.starts_with("<?xml")) << text.substr(0, 80);
    EXPECT_EQ(text.find("+-o"), std::string::npos);
    EXPECT_TRUE(isTemporaryEmpty());
}

} // namespace
} // namespace korvane
