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
#include <set>

namespace korvane {
namespace {

// A snapshot keeps every key of a tree but scan-notices unchanged, so the saved
// tree scans to the same ports with the same connector sources, places and
// companions; the live scan's notices advise its own machine and stay behind.
// The trees are the sysfs tree builder's with and without the firmware's types.
TEST(LinuxTreeKeys, ASysfsTreeThroughASnapshotScansToTheSameConnectorSources) {
    IDsHome ids{"", ""};
    TempFolder tools;
    const TreeSource noSource{[] { return nullptr; }};
    const NativeUSBTreeScanner scanner(noSource, ids.names());
    const auto upc = testDataPath("linux/qemu-firmware-ports/acpiexec-all-upc.txt");
    const std::tuple<std::string, std::set<std::string>, bool> rows[] = {
        {writeFakeTool(tools.path(), "acpiexec", "cat '" + upc.string() + "'"),
         {"firmware", "inferred", "kernel"},
         false},
        {"", {"inferred", "kernel", "peer"}, true}};
    for (const auto& [acpiexec, expectedSources, hasNotices] : rows) {
        const auto live =
            SysfsRegistrySource(
                std::filesystem::path(KORVANE_LINUX_FIXTURES_DIR) / "qemu-firmware-ports" / "sys", acpiexec)
                .copyRoot();
        ASSERT_TRUE(live);
        const USBScanResult scanned = scanner.scanTree(*live);
        std::set<std::string> sources;
        for (const auto& controller : scanned.controllers) {
            for (const auto& port : controller.ports) {
                sources.insert(std::string(connectorSourceName(port.connectorSource)));
            }
        }
        EXPECT_EQ(sources, expectedSources);
        EXPECT_EQ(scanned.notices.empty(), !hasNotices);

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
