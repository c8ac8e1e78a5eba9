#include "scanner/LinuxTreeKeys.h"

#include "platform/linux/SysfsRegistrySource.h"
#include "savedregistry/SnapshotCodec.h"
#include "scanner/NativeUSBTreeScanner.h"
#include "support/FakeTool.h"
#include "support/IDsHome.h"
#include "support/RegistryTrees.h"
#include "support/ScanText.h"
#include "support/TempFolder.h"
#include "support/TestData.h"

#include <gtest/gtest.h>

namespace korvane {
namespace {

// A snapshot keeps every key of a tree but scan-notices unchanged, so the saved
// tree scans to the same ports with the same connector sources, places and
// companions; the live scan's notices advise its own machine and stay behind.
// The trees are the sysfs tree builder's with the firmware's types and with
// the kernel's and a notice (their sources are pinned by the capture's goldens).
TEST(LinuxTreeKeys, ASysfsTreeThroughASnapshotScansToTheSameConnectorSources) {
    IDsHome ids{"", ""};
    TempFolder tools;
    const TreeSource noSource{[] { return nullptr; }};
    const NativeUSBTreeScanner scanner(noSource, ids.names());
    const auto sysfs = std::filesystem::path(KORVANE_LINUX_FIXTURES_DIR) / "qemu-firmware-ports" / "sys";
    const auto upc = testDataPath("linux/qemu-firmware-ports/acpiexec-all-upc.txt");
    for (const std::string& acpiexec :
         {writeFakeTool(tools.path(), "acpiexec", "cat '" + upc.string() + "'"), std::string()}) {
        const auto live = SysfsRegistrySource(sysfs, acpiexec).copyRoot();
        ASSERT_TRUE(live);
        const USBScanResult scanned = scanner.scanTree(*live);
        EXPECT_EQ(scanned.notices.empty(), !acpiexec.empty());

        const auto back = parseSnapshot(snapshotPropertyList(*live));
        ASSERT_TRUE(back);
        const USBScanResult reread = scanner.scanTree(*back);
        EXPECT_EQ(scanText(reread, true), scanText(scanned, true));
        EXPECT_TRUE(reread.notices.empty());
        live->properties.editableDictionary().erase(linuxTreeKey::scanNotices);
        EXPECT_TRUE(sameTree(*live, *back));
    }
}

} // namespace
} // namespace korvane
