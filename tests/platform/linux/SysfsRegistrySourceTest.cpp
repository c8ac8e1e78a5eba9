#include "platform/linux/SysfsRegistrySource.h"

#include "base/FileIO.h"
#include "linux/SysfsTree.h"
#include "platform/LiveSources.h"
#include "scanner/NativeUSBTreeScanner.h"
#include "support/FakeTool.h"
#include "support/Golden.h"
#include "support/IDsHome.h"
#include "support/RegistryTrees.h"
#include "support/ScanText.h"
#include "support/TestData.h"

#include <gmock/gmock.h>

namespace korvane {
namespace {

std::filesystem::path fixtureRoot(const char* machine) {
    return std::filesystem::path(KORVANE_LINUX_FIXTURES_DIR) / machine / "sys";
}

using SysfsMachineTest = ::testing::TestWithParam<const char*>;

TEST_P(SysfsMachineTest, ScansToTheControllersPortsAndDevicesOfTheCapture) {
    IDsHome ids{"", ""};
    TempFolder tools;
    const auto sysfsRoot = fixtureRoot(GetParam());
    ASSERT_TRUE(std::filesystem::is_directory(sysfsRoot / "devices")) << "the build unpacks " << sysfsRoot;
    // A machine with a recorded acpiexec run gets a fake acpiexec that prints it.
    const auto run = testDataPath(std::string("linux/") + GetParam() + "/acpiexec-all-upc.txt");
    const SysfsRegistrySource source(
        sysfsRoot, std::filesystem::exists(run)
                       ? writeFakeTool(tools.path(), "acpiexec", "cat '" + run.string() + "'")
                       : "");
    const auto scan = NativeUSBTreeScanner(source, ids.names()).scan();
    EXPECT_TRUE(matchesGolden(scanText(scan, true), std::string("sysfs-scans/") + GetParam() + ".txt"));
    EXPECT_EQ(liveScanSource().kind, ScanSource::Kind::linuxSysfs) << "what the report names as read";
}

// The sysfs captures the build unpacks: QEMU machines, and real machines'
// umockdev recordings as umockdev's own test bed lays them out.
INSTANTIATE_TEST_SUITE_P(Fixtures, SysfsMachineTest,
                         ::testing::Values("qemu-basic", "qemu-empty", "qemu-dual", "qemu-acpi",
                                           "qemu-firmware-ports", "amd-1022-43d5-nb1010",
                                           "amd-1022-1639-upektc", "amd-1022-15e0-fido2-hub",
                                           "intel-tb3-8086-15b5-hub-chain", "intel-8086-9ded-usbkbd"),
                         [](const auto& row) { return testNameOf(row.param); });

// However the firmware's types fail to come, the scan is the kernel's, as
// before there were any, and it says once how to get them. The tool runs
// once for all ports, and not again while the tables stay as they were.
TEST(SysfsRegistrySource, FirmwareTypesComeFromOneRunOrTheScanSaysHowToGetThem) {
    IDsHome ids{"", ""};
    TempFolder tools;
    const auto root = fixtureRoot("qemu-firmware-ports");
    const auto runs = tools.path() / "runs";
    const auto counted =
        writeFakeTool(tools.path(), "counted",
                      "echo run >> '" + runs.string() + "'\ncat '" +
                          testDataPath("linux/qemu-firmware-ports/acpiexec-all-upc.txt").string() + "'");
    const SysfsRegistrySource source(root, counted);
    const NativeUSBTreeScanner scanner(source, ids.names());
    EXPECT_TRUE(scanner.scan().notices.empty());
    EXPECT_TRUE(scanner.scan().notices.empty());
    EXPECT_EQ(readFileBytes(runs), "run\n") << "one run for every port of two scans";

    const std::pair<std::string, const char*> failures[] = {
        {"", "install acpica-tools (sudo apt install acpica-tools)"},
        {writeFakeTool(tools.path(), "failing", "echo 'Could not open input file: DSDT'; exit 255"),
         "could not be read: acpiexec failed: Could not open input file: DSDT."},
        {writeFakeTool(tools.path(), "hanging", "exec sleep 10"), "acpiexec did not finish within 0.3 s"}};
    for (const auto& [acpiexec, notice] : failures) {
        const auto result =
            NativeUSBTreeScanner(SysfsRegistrySource(root, acpiexec, 0.3), ids.names()).scan();
        EXPECT_TRUE(
            matchesGolden(scanText(result, true), "sysfs-scans/qemu-firmware-ports-without-acpiexec.txt"));
        EXPECT_THAT(result.notices, testing::ElementsAre(testing::HasSubstr(notice)));
    }
}

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
                               "    IOPCIDevice <IOPCIDevice>\n" // a bridge without IDs
                               "      pci1b21,1242 <IOPCIDevice>\n"
                               "        pci1b21,1242@00000000 <xhci_hcd>\n"
                               "          HS01@00100000 <usb_port>\n"
                               "          HS02@00200000 <usb_port>\n");
}

} // namespace
} // namespace korvane
