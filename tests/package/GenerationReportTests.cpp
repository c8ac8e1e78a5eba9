#include "PackageTestSupport.h"
#include "package/GenerationReport.h"
#include "support/Golden.h"

#include <gtest/gtest.h>

namespace korvane {
namespace {

TEST(GenerationReport, ListsEveryControllerAndPortAlsoThoseThePackageLeavesOut) {
    // Own ports, sorted by number, with blank and empty fields and a device.
    auto own = makeController("XHC1", 0x8086, 0xa36d,
                              {{"SS01", "14100000", 3, portData(17), "", ""},
                               {"HS03", "14300000", 9, portData(3), "", "  Ultra Fit  "},
                               {"NUL", "", 255, {}, "", ""},
                               {"HS03", "x", 0, portData(3), "", ""}});
    // No ports: the template's, counted as the ports written.
    auto fromTemplate = makeController("XHC2", 0x8086, 0x9cb1);
    fromTemplate.location = "14";
    fromTemplate.providerClass = "AppleUSBXHCILPTH";
    // No identity and no ports: still listed.
    const auto unknown = makeController("", 0, 0x1234);
    EXPECT_TRUE(
        matchesGolden(generationReportText({own, fromTemplate, unknown}), "package/Korvane-report.txt"));
    EXPECT_TRUE(std::string(emptyGenerationReportText).ends_with("without USB configuration data."))
        << "no final line feed";
}

} // namespace
} // namespace korvane
