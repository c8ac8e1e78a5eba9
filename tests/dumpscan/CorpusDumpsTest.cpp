#include "DumpTestSupport.h"
#include "dumpscan/DumpParser.h"
#include "dumpscan/USBTreeScanner.h"
#include "records/FileIO.h"
#include "support/BuildTree.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace korvane {
namespace {

class NoLiveRegistry : public RegistrySource {
  public:
    std::unique_ptr<NativeUSBNode> copyRoot() const override { return nullptr; }
};

// Real dumps hold the IDs on the PCI node, never on the xHCI driver node, so
// only the PCI pass finds controllers, without ports, and only those not
// behind a bridge (see tests/data/dumpscan/README.md for the working).
struct CorpusCase {
    std::string name;
    std::string file;
    std::vector<std::string> stableIDs;
};

class CorpusDumpTest : public ::testing::TestWithParam<CorpusCase> {
  protected:
    dumptest::TinyNames names_;
    TempFolder temporary_;
};

TEST_P(CorpusDumpTest, GivesThePCIControllersOutsideBridges) {
    const auto path = dumptest::dataFile(GetParam().file);
    if (!std::filesystem::exists(path)) {
        GTEST_SKIP() << GetParam().file << " is missing";
    }
    const NoLiveRegistry live;
    USBTreeScanner scanner{path, live, names_.names(), buildTreeToolPaths().plutil};
    scanner.temporaryFolder = temporary_.path();
    const auto result = scanner.scan();
    std::vector<std::string> stableIDs;
    for (const auto& controller : result.controllers) {
        stableIDs.push_back(controller.stableID());
        EXPECT_TRUE(controller.ports.empty()) << controller.stableID();
        EXPECT_EQ(controller.providerClass, "");
        const std::string pciName = names_.names().pciName(controller.vendorID, controller.deviceID);
        EXPECT_EQ(controller.usbDeviceName,
                  pciName.empty() ? names_.names().usbName(controller.vendorID, controller.deviceID)
                                  : pciName);
    }
    EXPECT_EQ(stableIDs, GetParam().stableIDs);
    EXPECT_TRUE(temporary_.entries().empty());
}

INSTANTIATE_TEST_SUITE_P(
    Corpus, CorpusDumpTest,
    ::testing::Values(
        CorpusCase{"MacBookPro15_2", "macos/MacBookPro15-2/IOReg.txt", {"8086:9ded|XHC1|14|pci8086,9ded"}},
        CorpusCase{"MacPro6_1BehindBridgesOnly", "macos/MacPro6-1/IOReg.txt", {}},
        CorpusCase{"Macmini7_1", "macos/Macmini7-1/IOReg.txt", {"8086:9c31|XHC1|14|pci8086,9c31"}},
        CorpusCase{"HackintoshService",
                   "macos/hackintosh-CML/ioreg_ioservice.txt",
                   {"8086:02ed|XHC|14|pci8086,02ed"}},
        CorpusCase{"HackintoshUSBPlane", "macos/hackintosh-CML/ioreg_IOUSB-plane.txt", {}},
        CorpusCase{"IMacPro1_1", "macos/iMacPro1-1/IOReg.txt", {"8086:a2af|XHC1|14|pci8086,a2af"}},
        CorpusCase{"IMac19_1NotUTF8", "macos/iMac19-1/IOReg.txt", {}},
        CorpusCase{"QemuWithoutProperties", "macos/qemu-MacPro7-1/ioreg.txt", {}},
        CorpusCase{"IMac14_2BinaryPropertyList", "macos/iMac14-2/IORegistryExplorer.ioreg", {}}),
    [](const ::testing::TestParamInfo<CorpusCase>& row) { return row.param.name; });

TEST(CorpusDump, IMac19_1IsEmptiedOnlyByItsOneBadByte) {
    const auto bytes = readFileBytes(dumptest::dataFile("macos/iMac19-1/IOReg.txt"));
    if (!bytes) {
        GTEST_SKIP() << "tests/data/macos/iMac19-1 is missing";
    }
    dumptest::TinyNames names;
    const auto controllers = parseControllers(*bytes, names.names());
    ASSERT_EQ(controllers.size(), 1u);
    EXPECT_EQ(controllers[0].stableID(), "8086:a36d|XHC1|14|pci8086,a36d");
}

} // namespace
} // namespace korvane
