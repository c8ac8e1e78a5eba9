#include "dumpscan/DumpParser.h"

#include "support/Golden.h"
#include "support/IDsHome.h"
#include "support/ScanText.h"

#include <gtest/gtest.h>

namespace korvane {
namespace {

// Each hand-made dump drives one group of the parser's rules; the README
// beside them says which part of each dump shows which rule.
using HandMadeDumpTest = ::testing::TestWithParam<const char*>;

TEST_P(HandMadeDumpTest, ParsesToItsReviewedControllersAndPorts) {
    IDsHome ids;
    const std::string name = GetParam();
    EXPECT_TRUE(matchesGolden(scanText(parseControllers(testDataBytes("dumpscan/" + name), ids.names())),
                              "line-scanner/" + name));
}

INSTANTIATE_TEST_SUITE_P(Dumps, HandMadeDumpTest,
                         ::testing::Values("handmade-every-port-branch.txt", "handmade-controller-rules.txt",
                                           "handmade-odd-markers-and-depth.txt"),
                         [](const auto& row) { return testNameOf(row.param); });

TEST(DumpParser, TheIMac19_1DumpParsedAsRawBytesGivesItsPCIController) {
    // As text it is empty (one Mac Roman byte); see the corpus golden file.
    IDsHome ids;
    EXPECT_EQ(scanText(parseControllers(testDataBytes("macos/iMac19-1/IOReg.txt"), ids.names())),
              "8086:a36d XHC1@14    pci8086,a36d  \"Intel Corporation Cannon Lake PCH USB "
              "3.1 xHCI Host Controller\"\n");
}

} // namespace
} // namespace korvane
