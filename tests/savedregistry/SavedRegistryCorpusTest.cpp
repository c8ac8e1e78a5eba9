// Every saved machine of the corpus, scanned as the window and --registry
// scan it. The expected controllers and ports were read off each dump by
// hand (see tests/data/expected/registry-scans) and must not drift.

#include "savedregistry/SavedRegistry.h"
#include "scanner/NativeUSBTreeScanner.h"
#include "support/Golden.h"
#include "support/IDsHome.h"
#include "support/ScanText.h"

#include <gtest/gtest.h>

namespace korvane {
namespace {

using SavedRegistryCorpusTest = testing::TestWithParam<const char*>;

TEST_P(SavedRegistryCorpusTest, ScansToTheControllersAndPortsReadOffTheDump) {
    CorpusIDsHome ids;
    const auto dump = testDataPath(std::string("macos/") + GetParam());
    const auto source = openSavedRegistry(dump);
    ASSERT_TRUE(source) << dump;
    const std::string machine = std::filesystem::path(GetParam()).parent_path().string();
    const std::string file = std::filesystem::path(GetParam()).stem().string();
    EXPECT_TRUE(matchesGolden(scanText(NativeUSBTreeScanner(*source, ids.names()).scan()),
                              "registry-scans/" + machine + "-" + file + ".txt"));
}

INSTANTIATE_TEST_SUITE_P(Dumps, SavedRegistryCorpusTest,
                         testing::Values("iMac19-1/IOReg.txt", "MacBookPro15-2/IOReg.txt",
                                         "MacPro6-1/IOReg.txt", "Macmini7-1/IOReg.txt",
                                         "iMacPro1-1/IOReg.txt", "hackintosh-CML/ioreg_ioservice.txt",
                                         "hackintosh-CML/ioreg_IOUSB-plane.txt", "qemu-MacPro7-1/ioreg.txt"),
                         [](const auto& row) { return testNameOf(row.param); });

} // namespace
} // namespace korvane
