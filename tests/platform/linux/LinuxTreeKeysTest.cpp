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

#include <functional>
#include <gtest/gtest.h>
#include <set>

namespace korvane {
namespace {

// The trees each connector source comes from: the sysfs tree builder with and
// without the firmware's types.
struct TreeRow {
    const char* name;
    std::function<std::unique_ptr<NativeUSBNode>(const std::filesystem::path& tools)> tree;
    std::set<std::string> sources;
    bool hasNotices = false;
};

void PrintTo(const TreeRow& row, std::ostream* out) {
    *out << row.name;
}

std::unique_ptr<NativeUSBNode> sysfsTree(const char* machine, std::string acpiexec = {}) {
    return SysfsRegistrySource(std::filesystem::path(KORVANE_LINUX_FIXTURES_DIR) / machine / "sys",
                               std::move(acpiexec))
        .copyRoot();
}

const TreeRow treeRows[] = {
    {"FirmwareTypes",
     [](const std::filesystem::path& tools) {
         return sysfsTree(
             "qemu-firmware-ports",
             writeFakeTool(tools, "acpiexec",
                           "cat '" + testDataPath("linux/qemu-firmware-ports/acpiexec-all-upc.txt").string() +
                               "'"));
     },
     {"firmware", "inferred", "kernel"}},
    {"KernelTypesWithANotice",
     [](const auto&) { return sysfsTree("qemu-firmware-ports"); },
     {"inferred", "kernel", "peer"},
     true},
};

class TreeThroughSnapshot : public ::testing::TestWithParam<TreeRow> {
  protected:
    IDsHome ids{"", ""};
    TempFolder tools;
    const TreeSource noSource{[] { return nullptr; }};
};

// A snapshot keeps every key of a tree but scan-notices unchanged, so the saved
// tree scans to the same ports with the same connector sources, places and
// companions; the live scan's notices advise its own machine and stay behind.
TEST_P(TreeThroughSnapshot, ScansToTheSameConnectorSources) {
    const auto live = GetParam().tree(tools.path());
    ASSERT_TRUE(live);
    const NativeUSBTreeScanner scanner(noSource, ids.names());
    const USBScanResult scanned = scanner.scanTree(*live);
    std::set<std::string> sources;
    for (const auto& controller : scanned.controllers) {
        for (const auto& port : controller.ports) {
            sources.insert(std::string(connectorSourceName(port.connectorSource)));
        }
    }
    EXPECT_EQ(sources, GetParam().sources);
    EXPECT_EQ(scanned.notices.empty(), !GetParam().hasNotices);

    const auto back = parseSnapshot(snapshotPropertyList(*live));
    ASSERT_TRUE(back);
    const USBScanResult reread = scanner.scanTree(*back);
    EXPECT_EQ(scanText(reread, true), scanText(scanned, true));
    EXPECT_TRUE(reread.notices.empty());
    live->properties.editableDictionary().erase(linuxTreeKey::scanNotices);
    EXPECT_TRUE(sameTree(*live, *back));
}

INSTANTIATE_TEST_SUITE_P(Trees, TreeThroughSnapshot, ::testing::ValuesIn(treeRows),
                         [](const auto& row) { return std::string(row.param.name); });

} // namespace
} // namespace korvane
