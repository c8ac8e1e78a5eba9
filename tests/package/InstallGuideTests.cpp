#include "package/InstallGuide.h"
#include "records/PortPlace.h"
#include "support/Golden.h"
#include "support/USBRecords.h"

#include <gmock/gmock.h>

namespace korvane {
namespace {

using testing::HasSubstr;
using testing::Not;

// XHC1 keeps a named USB 3 socket whole and HS02 without its SS02; XHC2
// keeps nothing and falls back on its template; XHC3 has no template.
InstallGuide deskGuide() {
    auto hs01 = makePort("HS01", 1, "Keyboard", 3);
    hs01.connectorSource = ConnectorSource::firmware;
    hs01.place = portPlaceFromWords("back", "upper", "left", false, false);
    auto ss01 = makePort("SS01", 17, "", 255);
    ss01.connectorSource = ConnectorSource::user;
    auto hs02 = makePort("HS02", 2, "", 200);
    hs02.connectorSource = ConnectorSource::inferred;
    const USBControllerMap xhc1{"XHC1", "14000000", 0x8086, 0xa36d, "", "", "", {hs01, ss01, hs02}};
    return {.targetModel = "iMac19,1",
            .targetModelOrigin = "your choice",
            .source = {ScanSource::Kind::savedRegistry, "IOReg.txt", "ioreg text"},
            .controllers = {
                {xhc1,
                 {{"rear, blue, top", "SS01", true, "Keyboard (in it when the ports were read)"},
                  {"", "HS01", true, "SanDisk Ultra, 14:03"},
                  {"", "SS02", false, ""}},
                 15},
                {makeController("XHC2", 0x8086, 0x9cb1), {}, 15},
                {makeController("XHC3", 0x1b73, 0x1100), {}, std::nullopt},
            }};
}

TEST(InstallGuide, SaysWhatTheMapHoldsPortByPortAndHowToInstallIt) {
    EXPECT_TRUE(matchesGolden(installGuideText(deskGuide()), "package/INSTALL.txt"));
}

TEST(InstallGuide, WarnsOfAModelThatNamesNoMacAndOfTooManyPorts) {
    auto guide = deskGuide();
    guide.targetModel = "Mac";
    guide.isTargetModelAMac = false;
    guide.controllers[0].controller.ports = makePorts(17);
    guide.controllers[0].ports.assign(17, {});
    const auto text = installGuideText(guide);
    EXPECT_THAT(text, HasSubstr("\"Mac\" names no Mac, so macOS applies this map nowhere."));
    EXPECT_THAT(text, Not(HasSubstr("applies this map only on")));
    EXPECT_THAT(text, HasSubstr("XHC1 (8086:a36d, at 14000000): 17 ports of the 15 macOS uses on this "
                                "controller: 2 too many"));
    EXPECT_THAT(text, Not(HasSubstr("without their companion")));
}

} // namespace
} // namespace korvane
