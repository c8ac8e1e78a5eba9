#include "platform/linux/SysfsRegistrySource.h"

#include "linux/SysfsTree.h"
#include "scanner/NativeUSBTreeScanner.h"
#include "support/Golden.h"
#include "support/IDsHome.h"
#include "support/RegistryTrees.h"
#include "support/ScanText.h"

#include <gtest/gtest.h>

namespace korvane {
namespace {

// The sysfs captures the build unpacks: QEMU machines, and real machines'
// umockdev recordings as umockdev's own test bed lays them out.
const char* const machines[] = {"qemu-basic",
                                "qemu-empty",
                                "qemu-dual",
                                "qemu-acpi",
                                "amd-1022-43d5-nb1010",
                                "amd-1022-1639-upektc",
                                "amd-1022-15e0-fido2-hub",
                                "intel-tb3-8086-15b5-hub-chain",
                                "intel-8086-9ded-usbkbd"};

class SysfsMachineTest : public ::testing::TestWithParam<const char*> {
  protected:
    IDsHome ids{"", ""};
};

TEST_P(SysfsMachineTest, ScansToTheControllersPortsAndDevicesOfTheCapture) {
    const auto sysfsRoot = std::filesystem::path(KORVANE_LINUX_FIXTURES_DIR) / GetParam() / "sys";
    ASSERT_TRUE(std::filesystem::is_directory(sysfsRoot / "devices")) << "the build unpacks " << sysfsRoot;
    const SysfsRegistrySource source(sysfsRoot);
    EXPECT_TRUE(matchesGolden(scanText(NativeUSBTreeScanner(source, ids.names()).scan()),
                              std::string("sysfs-scans/") + GetParam() + ".txt"));
}

INSTANTIATE_TEST_SUITE_P(Fixtures, SysfsMachineTest, ::testing::ValuesIn(machines),
                         [](const auto& row) { return testNameOf(row.param); });

// Links are never walked into, so a loop planted anywhere in the tree (or a
// link back to a controller) neither hangs the walk nor doubles a node.
TEST(SysfsRegistrySource, LinkLoopsNeitherHangTheWalkNorDoubleNodes) {
    TempFolder folder;
    EXPECT_EQ(SysfsRegistrySource(folder.path()).copyRoot(), nullptr) << "no devices folder, no tree";
    writeSysfsTree(folder.path(), "link-loops.tree");

    const auto root = SysfsRegistrySource(folder.path()).copyRoot();
    ASSERT_NE(root, nullptr);
    EXPECT_EQ(treeText(*root), "Root <IORegistryEntry>\n"
                               "  pci0000:00 <pci_host_bridge>\n"
                               "    IOPCIDevice@1C <IOPCIDevice>\n" // a bridge without IDs
                               "      pci1b21,1242@0 <IOPCIDevice>\n"
                               "        pci1b21,1242@00000000 <xhci_hcd>\n"
                               "          HS01@00100000 <usb_port>\n"
                               "          HS02@00200000 <usb_port>\n");
}

} // namespace
} // namespace korvane
