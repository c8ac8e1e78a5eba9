#include "TreeAssertions.h"
#include "ids/IDsNameResolver.h"
#include "savedregistry/SavedRegistry.h"
#include "savedregistry/SnapshotCodec.h"
#include "scanner/NativeUSBTreeScanner.h"
#include "support/BuildTree.h"
#include "support/TempFolder.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace korvane {
namespace {

// The controllers and ports of each real dump, read off the dump by hand: the
// xHCI PCI node gives vendor, device and location (its "@location", for a PCI
// node carries no location property), the xHCI driver node below it the name
// and provider class, the "ports" table and the port nodes the ports, and the
// first named device below a port its active device. Names come from the
// hwdata databases the build bundles.
struct ExpectedPort {
    std::string name;
    std::int64_t number;
    std::int64_t connector;
    std::string activeDevice;
};

struct ExpectedController {
    std::int64_t vendorID;
    std::int64_t deviceID;
    std::string name;
    std::string location;
    std::string providerClass;
    std::string usbDeviceName;
    std::vector<ExpectedPort> ports;
};

struct CorpusCase {
    const char* name;
    const char* file;
    std::vector<ExpectedController> controllers;
    friend void PrintTo(const CorpusCase& row, std::ostream* out) { *out << row.name; }
};

const std::string kTitanRidge4C =
    "Intel Corporation JHL7540 Thunderbolt 3 USB Controller [Titan Ridge 4C 2018]";

const CorpusCase kCorpus[] = {
    {"iMac19_1",
     "iMac19-1/IOReg.txt",
     {{0x8086,
       0x15ec,
       "XHC2",
       "0",
       "AppleUSBXHCITR",
       kTitanRidge4C,
       {{"SSP1", 3, 9, ""}, {"SSP2", 4, 9, ""}}},
      {0x8086,
       0xa36d,
       "XHC1",
       "14",
       "AppleIntelCNLUSBXHCI",
       "Intel Corporation Cannon Lake PCH USB 3.1 xHCI Host Controller",
       {{"HS03", 3, 3, ""},
        {"HS05", 5, 9, ""},
        {"HS08", 8, 3, ""},
        {"HS10", 10, 3, ""},
        {"HS12", 12, 9, ""},
        {"HS13", 13, 255, "FaceTime HD Camera (Built-in)"},
        {"HS14", 14, 3, ""},
        {"SS02", 18, 3, ""},
        {"SS03", 19, 3, ""},
        {"SS04", 20, 3, ""},
        {"SS05", 21, 3, ""}}}}},
    // XHC3@01000000 (8086:15ec again) sits below PCI node XHC3@0: the same
    // vendor, device and PCI location as XHC2, so the scan merges the two.
    {"MacBookPro15_2",
     "MacBookPro15-2/IOReg.txt",
     {{0x8086,
       0x15ec,
       "XHC2",
       "0",
       "AppleUSBXHCITR",
       kTitanRidge4C,
       {{"SSP1", 3, 9, "4-Port USB 3.0 Hub"}, {"SSP2", 4, 9, ""}}},
      {0x8086,
       0x9ded,
       "XHC1",
       "14",
       "AppleIntelCNLUSBXHCI",
       "Intel Corporation Cannon Point-LP USB 3.1 xHCI Controller",
       {{"HS06", 6, 9, "4-Port USB 2.0 Hub"}, {"HS07", 7, 9, ""}, {"HS08", 8, 9, ""}, {"HS09", 9, 9, ""}}}}},
    {"MacPro6_1",
     "MacPro6-1/IOReg.txt",
     {{0x1b73,
       0x1100,
       "XHC1",
       "0",
       "AppleUSBXHCIFL1100",
       "Fresco Logic FL1100 USB 3.0 Host Controller",
       {{"HS01", 1, 3, "USB2.0 Hub"},
        {"HS02", 2, 3, ""},
        {"HS03", 3, 3, ""},
        {"HS04", 4, 3, ""},
        {"SSP1", 5, 3, "USB3.0 Hub"},
        {"SSP2", 6, 3, ""},
        {"SSP3", 7, 3, "Backup+  SL"},
        {"SSP4", 8, 3, ""}}}}},
    {"Macmini7_1",
     "Macmini7-1/IOReg.txt",
     {{0x8086, 0x9c31, "AppleUSBXHCI", "14", "AppleUSBXHCI", "Intel Corporation 8 Series USB xHCI HC", {}}}},
    // As on the MacBookPro15,2, the second Alpine Ridge (XHC3) merges into XHC2.
    {"iMacPro1_1",
     "iMacPro1-1/IOReg.txt",
     {{0x8086,
       0x15d4,
       "XHC2",
       "0",
       "AppleUSBXHCIAR",
       "Intel Corporation JHL6540 Thunderbolt 3 USB Controller (C step) [Alpine Ridge 4C 2016]",
       {{"SSP1", 3, 9, ""}, {"SSP2", 4, 9, ""}}},
      {0x8086,
       0xa2af,
       "XHC1",
       "14",
       "AppleUSBXHCISPT",
       "Intel Corporation 200 Series/Z370 Chipset Family USB 3.0 xHCI Controller",
       {{"HS02", 2, 3, ""},
        {"HS03", 3, 3, ""},
        {"HS04", 4, 3, ""},
        {"HS05", 5, 9, ""},
        {"HS06", 6, 9, ""},
        {"HS07", 7, 9, ""},
        {"HS08", 8, 9, ""},
        {"HS10", 10, 3, ""},
        {"HS12", 12, 255, ""},
        {"HS13", 13, 255, ""},
        {"SS02", 18, 3, ""},
        {"SS03", 19, 3, "Ultra Fit"},
        {"SS04", 20, 255, ""},
        {"SS05", 21, 3, ""},
        {"SS06", 22, 3, ""}}}}},
    {"HackintoshServicePlane",
     "hackintosh-CML/ioreg_ioservice.txt",
     {{0x8086,
       0x02ed,
       "XHC",
       "14",
       "AppleUSBXHCISPT",
       "Intel Corporation Comet Lake PCH-LP USB 3.1 xHCI Host Controller",
       {{"HS01", 1, 3, "USB2.0-Serial"},
        // A hub with no name properties: usb.ids names it from 04b4:6560.
        {"HS02", 2, 3, "Cypress Semiconductor Corp. CY7C65640 USB-2.0 \"TetraHub\""},
        {"HS03", 3, 3, "rk3xxx"},
        {"HS04", 4, 9, ""},
        {"HS05", 5, 255, ""},
        {"HS06", 6, 0, ""},
        {"HS07", 7, 9, ""},
        {"HS08", 8, 255, ""},
        {"HS09", 9, 0, ""},
        {"HS10", 10, 255, "Bluetooth"},
        {"HS11", 11, 255, ""},
        {"HS12", 12, 255, ""},
        {"SS01", 13, 3, ""},
        {"SS02", 14, 3, ""},
        {"SS03", 15, 3, ""},
        {"SS04", 16, 9, ""},
        {"SS05", 17, 255, ""},
        {"SS06", 18, 255, ""}}},
      {0x8086,
       0x15e9,
       "XHC",
       "0",
       "AppleUSBXHCITR",
       "Intel Corporation JHL7540 Thunderbolt 3 USB Controller [Titan Ridge 2C 2018]",
       {{"HS01", 1, 255, ""},
        {"HS02", 2, 255, ""},
        {"SS01", 3, 9, "USB 10_100_1G_2_5G LAN"},
        {"SS02", 4, 255, ""}}}}},
    {"HackintoshUSBPlane", "hackintosh-CML/ioreg_IOUSB-plane.txt", {}},
    {"QemuWithoutProperties", "qemu-MacPro7-1/ioreg.txt", {}},
};

class SavedRegistryCorpusTest : public testing::TestWithParam<CorpusCase> {
  protected:
    void SetUp() override {
        const auto resources = buildTreeResourceDirectory();
        if (!std::filesystem::exists(resources / "Tools" / "pci.ids") ||
            !std::filesystem::exists(resources / "Tools" / "usb.ids")) {
            GTEST_SKIP() << "the bundled ids databases are missing from " << resources;
        }
        names_ =
            std::make_unique<IDsNameResolver>(IDsDatabaseLocations{folder_.path() / "support", resources});
    }

    TempFolder folder_;
    std::unique_ptr<IDsNameResolver> names_;
};

TEST_P(SavedRegistryCorpusTest, ScansToTheControllersAndPortsOfTheDump) {
    const auto path = std::filesystem::path(KORVANE_TEST_DATA_DIR) / "macos" / GetParam().file;
    if (!std::filesystem::exists(path)) {
        GTEST_SKIP() << "fixture missing: " << path;
    }
    const auto source = openSavedRegistry(path);
    ASSERT_TRUE(source);
    const USBScanResult result = NativeUSBTreeScanner(*source, *names_).scan();

    const auto& expected = GetParam().controllers;
    ASSERT_EQ(result.controllers.size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i) {
        const auto& got = result.controllers[i];
        const auto& want = expected[i];
        SCOPED_TRACE(want.name + "@" + want.location);
        EXPECT_EQ(got.vendorID, want.vendorID);
        EXPECT_EQ(got.deviceID, want.deviceID);
        EXPECT_EQ(got.name, want.name);
        EXPECT_EQ(got.location, want.location);
        EXPECT_EQ(got.providerClass, want.providerClass);
        EXPECT_EQ(got.usbDeviceName, want.usbDeviceName);
        ASSERT_EQ(got.ports.size(), want.ports.size());
        for (std::size_t p = 0; p < want.ports.size(); ++p) {
            SCOPED_TRACE(want.ports[p].name);
            EXPECT_EQ(got.ports[p].name, want.ports[p].name);
            EXPECT_EQ(portNumber(got.ports[p].portData), want.ports[p].number);
            EXPECT_EQ(got.ports[p].connector, want.ports[p].connector);
            EXPECT_EQ(got.ports[p].activeDevice, want.ports[p].activeDevice);
        }
    }
}

TEST_P(SavedRegistryCorpusTest, ASnapshotOfTheDumpReadsBackTheSameTreeAndScan) {
    const auto path = std::filesystem::path(KORVANE_TEST_DATA_DIR) / "macos" / GetParam().file;
    if (!std::filesystem::exists(path)) {
        GTEST_SKIP() << "fixture missing: " << path;
    }
    const auto source = openSavedRegistry(path);
    ASSERT_TRUE(source);
    const auto tree = source->copyRoot();
    ASSERT_TRUE(tree);
    const auto snapshotPath = folder_.path() / "registry.plist";
    writeSnapshot(*tree, snapshotPath);
    const auto snapshot = openSavedRegistry(snapshotPath);
    ASSERT_TRUE(snapshot);
    const auto back = snapshot->copyRoot();
    ASSERT_TRUE(back);
    EXPECT_TRUE(sameTree(*tree, *back));
    EXPECT_EQ(NativeUSBTreeScanner(*snapshot, *names_).scan(), NativeUSBTreeScanner(*source, *names_).scan());
}

INSTANTIATE_TEST_SUITE_P(Dumps, SavedRegistryCorpusTest, testing::ValuesIn(kCorpus),
                         [](const testing::TestParamInfo<CorpusCase>& row) { return row.param.name; });

} // namespace
} // namespace korvane
