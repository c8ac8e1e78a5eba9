#include "dumpscan/USBTreeScanner.h"

#include "DumpTestSupport.h"
#include "scanner/ScannerTestSupport.h"
#include "support/BuildTree.h"

#include <functional>
#include <gtest/gtest.h>

namespace korvane {
namespace {

class TreeSource : public RegistrySource {
  public:
    explicit TreeSource(std::function<std::unique_ptr<NativeUSBNode>()> make) : make_(std::move(make)) {}
    std::unique_ptr<NativeUSBNode> copyRoot() const override { return make_(); }

  private:
    std::function<std::unique_ptr<NativeUSBNode>()> make_;
};

class USBTreeScannerTest : public ::testing::Test {
  protected:
    USBScanResult scan(const RegistrySource& live, std::optional<std::filesystem::path> dump) {
        USBTreeScanner scanner{std::move(dump), live, names_.names(), buildTreeToolPaths().plutil};
        scanner.temporaryFolder = folder_.path();
        return scanner.scan();
    }

    dumptest::TinyNames names_;
    TempFolder folder_;
    const TreeSource nothingLive_{[] { return nullptr; }};
    const TreeSource oneLive_{[] {
        auto tree = makeRoot();
        addXHCIPCIDevice(*tree, "LIVE", "1", 0x1022, 0x149c);
        return tree;
    }};
    const std::filesystem::path handMade_ = dumptest::dataFile("dumpscan/handmade-every-port-branch.txt");
};

TEST_F(USBTreeScannerTest, TheDumpIsReadOnlyWhenTheLiveScanFindsNothing) {
    const auto fromDump = scan(nothingLive_, handMade_);
    ASSERT_EQ(fromDump.controllers.size(), 2u);
    EXPECT_EQ(fromDump.controllers[1].ports.size(), 10u);
    EXPECT_TRUE(folder_.entries().empty());

    const auto live = scan(oneLive_, handMade_);
    ASSERT_EQ(live.controllers.size(), 1u);
    EXPECT_EQ(live.controllers[0].name, "LIVE");
}

TEST_F(USBTreeScannerTest, NoDumpOrAMissingOneGivesTheEmptyLiveResult) {
    EXPECT_TRUE(scan(nothingLive_, std::nullopt).controllers.empty());
    EXPECT_TRUE(scan(nothingLive_, folder_.path() / "missing.txt").controllers.empty());
    EXPECT_TRUE(folder_.entries().empty());
}

TEST_F(USBTreeScannerTest, ScanDumpSkipsTheLiveRegistry) {
    USBTreeScanner scanner{std::nullopt, oneLive_, names_.names(), buildTreeToolPaths().plutil};
    scanner.temporaryFolder = folder_.path();
    EXPECT_EQ(scanner.scanDump(handMade_).controllers.size(), 2u);
}

} // namespace
} // namespace korvane
