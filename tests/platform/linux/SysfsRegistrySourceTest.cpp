#include "platform/linux/SysfsRegistrySource.h"

#include "ids/IDsNameResolver.h"
#include "linux/UmockdevRecording.h"
#include "savedregistry/SavedRegistry.h"
#include "savedregistry/SnapshotCodec.h"
#include "scanner/NativeUSBTreeScanner.h"
#include "scanner/PropertyReaders.h"
#include "support/TempFolder.h"

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <gtest/gtest.h>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

namespace korvane {
namespace {

struct ExpectedPort {
    std::string name;
    std::int64_t number;
    std::int64_t connector;
    std::string activeDevice;
};

struct ExpectedController {
    std::int64_t vendorID;
    std::int64_t deviceID;
    std::string location;
    std::string name;
    std::vector<ExpectedPort> ports;
};

// Each machine's controllers and ports, written down from the capture's own
// files (listing.txt and meta.txt of the QEMU captures, the P:/A: records of
// the umockdev recordings).
struct Machine {
    std::string folder;
    bool isRecording; // umockdev recording, else a QEMU sysfs mirror
    std::vector<ExpectedController> controllers;
};

// QEMU's xHCI, no firmware port data: ports numbered from their root-hub
// position, USB 2 first. Every USB 2 port has a peer, so all say 3.
std::vector<ExpectedPort> qemuPorts(std::vector<std::string> activeHS, std::vector<std::string> activeSS) {
    std::vector<ExpectedPort> ports;
    for (int i = 0; i < 4; ++i) {
        ports.push_back({"HS0" + std::to_string(i + 1), i + 1, 3, activeHS[i]});
    }
    for (int i = 0; i < 4; ++i) {
        ports.push_back({"SS0" + std::to_string(i + 1), i + 5, 3, activeSS[i]});
    }
    return ports;
}

// A recording's USB 2 root hub: maxchild ports, no port folders, so no
// connector facts and the scanner's inference (3) applies.
std::vector<ExpectedPort> recordedPorts(int count, int activePort, const std::string& device) {
    std::vector<ExpectedPort> ports;
    for (int i = 1; i <= count; ++i) {
        char name[16];
        std::snprintf(name, sizeof name, "HS%02d", i);
        ports.push_back({name, i, 3, i == activePort ? device : ""});
    }
    return ports;
}

void PrintTo(const Machine& machine, std::ostream* out) {
    *out << machine.folder;
}

const std::vector<Machine>& machines() {
    static const std::vector<Machine> table = {
        {"qemu-basic",
         false,
         {{0x1b36, 0x000d, "4", "S20",
           qemuPorts({"QEMU USB Keyboard", "QEMU USB Tablet", "QEMU USB Hub", ""},
                     {"", "", "", "QEMU USB HARDDRIVE"})}}},
        {"qemu-empty", false, {{0x1b36, 0x000d, "4", "S20", qemuPorts({"", "", "", ""}, {"", "", "", ""})}}},
        {"qemu-dual",
         false,
         {{0x1033,
           0x0194,
           "5",
           "S28",
           // nec-usb-xhci p2=6 p3=2: ports 3 to 6 have no USB 3 peer and an
           // unknown connect_type, so the scanner infers their connector.
           {{"HS01", 1, 3, "QEMU USB Tablet"},
            {"HS02", 2, 3, ""},
            {"HS03", 3, 3, ""},
            {"HS04", 4, 3, ""},
            {"HS05", 5, 3, "QEMU USB Hub"},
            {"HS06", 6, 3, "QEMU USB HARDDRIVE"},
            {"SS01", 7, 3, ""},
            {"SS02", 8, 3, "QEMU USB HARDDRIVE"}}},
          {0x1b36, 0x000d, "4", "S20",
           qemuPorts({"QEMU USB Keyboard", "", "", ""}, {"", "", "QEMU USB HARDDRIVE", ""})}}},
        {"qemu-acpi",
         false,
         // The SSDT names the ports and gives QEMU's own numbering through
         // _ADR: SuperSpeed 1-4, then High Speed 5-8. usb1-port2 is
         // hardwired; usb1-port4 is hotplug without a peer (its USB 3 half is
         // "not used" and so unpaired). The capture kept the controller's
         // firmware_node link but not the ACPI node's path, so the controller
         // goes by its IDs.
         {{0x1b36,
           0x000d,
           "4",
           "pci1b36,d",
           {{"SS01", 1, 3, ""},
            {"SS02", 2, 3, ""},
            {"SS03", 3, 3, ""},
            {"SS04", 4, 3, "QEMU USB HARDDRIVE"},
            {"HS01", 5, 3, "QEMU USB Keyboard"},
            {"HS02", 6, 255, "QEMU USB Tablet"},
            {"HS03", 7, 3, "QEMU USB Hub"},
            {"HS04", 8, 0, ""}}}}},
        {"amd-1022-43d5-nb1010",
         true,
         {{0x1022, 0x43d5, "0", "pci1022,43d5", recordedPorts(10, 7, "NB-1010-U")}}},
        {"amd-1022-1639-upektc",
         true,
         {{0x1022, 0x1639, "0,4", "pci1022,1639", recordedPorts(4, 2, "Biometric Coprocessor")}}},
        {"amd-1022-15e0-fido2-hub",
         true,
         {{0x1022, 0x15e0, "0,3", "pci1022,15e0", recordedPorts(4, 2, "4-Port USB 2.0 Hub")}}},
        {"intel-tb3-8086-15b5-hub-chain",
         true,
         {{0x8086, 0x15b5, "0", "pci8086,15b5", recordedPorts(2, 1, "USB2.0 Hub")}}},
        {"intel-8086-9ded-usbkbd",
         true,
         {{0x8086, 0x9ded, "14", "pci8086,9ded", recordedPorts(12, 3, "USB Keyboard")}}},
    };
    return table;
}

class SysfsMachineTest : public ::testing::TestWithParam<Machine> {
  protected:
    void SetUp() override {
        const Machine& machine = GetParam();
        if (machine.isRecording) {
            writeUmockdevRecording(std::filesystem::path(KORVANE_TEST_DATA_DIR) / "linux" / machine.folder /
                                       "device.umockdev",
                                   folder_.path() / "sys");
            sysfsRoot_ = folder_.path() / "sys";
        } else {
            sysfsRoot_ = std::filesystem::path(KORVANE_LINUX_FIXTURES_DIR) / machine.folder / "sys";
        }
        if (!std::filesystem::is_directory(sysfsRoot_ / "devices")) {
            GTEST_SKIP() << "fixture not unpacked at " << sysfsRoot_;
        }
    }

    USBScanResult scan(const RegistrySource& source) { return NativeUSBTreeScanner(source, names_).scan(); }

    TempFolder folder_;
    std::filesystem::path sysfsRoot_;
    IDsNameResolver names_{IDsDatabaseLocations{folder_.path() / "no-ids", folder_.path() / "no-ids"}};
};

TEST_P(SysfsMachineTest, ScanGivesTheMachinesControllersPortsAndDevices) {
    const SysfsRegistrySource source(sysfsRoot_);
    const USBScanResult result = scan(source);
    const auto& expected = GetParam().controllers;
    ASSERT_EQ(result.controllers.size(), expected.size());
    for (std::size_t c = 0; c < expected.size(); ++c) {
        const auto& controller = result.controllers[c];
        SCOPED_TRACE(controller.name);
        EXPECT_EQ(controller.vendorID, expected[c].vendorID);
        EXPECT_EQ(controller.deviceID, expected[c].deviceID);
        EXPECT_EQ(controller.location, expected[c].location);
        EXPECT_EQ(controller.name, expected[c].name);
        EXPECT_EQ(controller.providerClass, "xhci_hcd");
        ASSERT_EQ(controller.ports.size(), expected[c].ports.size());
        for (std::size_t p = 0; p < expected[c].ports.size(); ++p) {
            const auto& port = controller.ports[p];
            const auto& want = expected[c].ports[p];
            SCOPED_TRACE(want.name);
            EXPECT_EQ(port.name, want.name);
            EXPECT_EQ(portNumber(port.portData), want.number);
            EXPECT_EQ(port.connector, want.connector);
            EXPECT_EQ(port.activeDevice, want.activeDevice);
        }
    }
}

TEST_P(SysfsMachineTest, SnapshotOfTheTreeScansAsTheLiveTree) {
    const SysfsRegistrySource source(sysfsRoot_);
    const auto root = source.copyRoot();
    ASSERT_NE(root, nullptr);
    const auto file = folder_.path() / "snapshot.plist";
    writeSnapshot(*root, file);
    const auto saved = openSavedRegistry(file);
    ASSERT_NE(saved, nullptr);
    EXPECT_EQ(scan(*saved), scan(source));
}

INSTANTIATE_TEST_SUITE_P(Fixtures, SysfsMachineTest, ::testing::ValuesIn(machines()),
                         [](const ::testing::TestParamInfo<Machine>& row) {
                             std::string name = row.param.folder;
                             std::replace(name.begin(), name.end(), '-', '_');
                             return name;
                         });

} // namespace
} // namespace korvane

namespace korvane {
namespace {

TEST(SysfsRegistrySourceTest, NoDevicesFolderGivesNoTree) {
    TempFolder folder;
    EXPECT_EQ(SysfsRegistrySource(folder.path()).copyRoot(), nullptr);
}

// Links are never walked into, so a loop planted anywhere in the tree (or a
// link back to a controller) neither hangs the walk nor doubles a node.
TEST(SysfsRegistrySourceTest, LinkLoopsNeitherHangTheWalkNorDoubleNodes) {
    TempFolder folder;
    const auto bridge = folder.path() / "devices/pci0000:00/0000:00:1c.0";
    const auto xhc = bridge / "0000:03:00.0";
    std::filesystem::create_directories(xhc / "usb1");
    std::ofstream(xhc / "class") << "0x0c0330\n";
    std::ofstream(xhc / "vendor") << "0x1b21\n";
    std::ofstream(xhc / "device") << "0x1242\n";
    std::ofstream(xhc / "usb1/maxchild") << "2\n";
    std::filesystem::create_directory_symlink("..", xhc / "0000:03:00.1");
    std::filesystem::create_directory_symlink("../..", xhc / "usb1" / "1-1");
    std::filesystem::create_directory_symlink("loop", bridge / "loop");

    const auto root = SysfsRegistrySource(folder.path()).copyRoot();
    ASSERT_NE(root, nullptr);
    const auto nodes = flatten(*root);
    // Root, host bridge, bridge, controller, service, two ports.
    EXPECT_EQ(nodes.size(), 7u);
    const NativeUSBNode* controller = nodes[3];
    EXPECT_EQ(controller->name, "pci1b21,1242");
    EXPECT_EQ(controller->location, "0");
    EXPECT_EQ(controller->parent->location, "1C");
}

} // namespace
} // namespace korvane
