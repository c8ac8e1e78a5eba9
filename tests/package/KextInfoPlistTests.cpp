#include "PackageTestSupport.h"
#include "package/KextInfoPlist.h"
#include "support/Golden.h"

#include <gtest/gtest.h>

namespace korvane {
namespace {

// One controller for each rule of the tree; the golden file is the whole
// Info.plist they give, read back through XML as a reader of the file sees it.
TEST(KextInfoPlist, EveryRuleOfTheTreeInOnePackage) {
    const std::vector<USBControllerMap> controllers = {
        // The highest written number counts; zero and empty port data are left out.
        makeController("XHC1", 0x8086, 0xa36d,
                       {makePort("HS01", 1, "", 0),
                        makePort("SS01", 17),
                        makePort("ZERO", 0),
                        {"EMPTY", "", 3, {}, "", ""}}),
        // Like IDs share the first support personality (whose model is the
        // first one's name) and keep their merges.
        makeController("XHC2", 0x8086, 0x15ec, {makePort("SSP1", 3, "", 9)}, "Titan Ridge"),
        makeController("XHC3", 0x8086, 0x15ec, {makePort("SSP1", 3, "", 9)}),
        // Of two equal port names the higher number stays; long data keeps every byte.
        makeController("PXSX", 0x1b21, 0x2142,
                       {makePort("HS01", 2, "", 0), {"HS01", "", 255, {5, 0, 0, 0, 0xff}, "", ""}}),
        // No ports: the template's ports and count.
        makeController("XHC4", 0x8086, 0x34ed),
        // No ports and no template: a support personality alone.
        makeController("XHC5", 0x1002, 1),
        // No identity: nothing at all.
        makeController("XHC6", 0, 0xa36d, {makePort("HS01", 1)}),
        // A later controller of the same name replaces the earlier one's merge.
        makeController("XHC7", 0x1b21, 0x1242, {makePort("PRT9", 9)}),
        makeController("XHC7", 0x1b21, 0x2142, {makePort("PRT1", 2)}),
    };
    const PlistPtr root =
        parsePropertyList(propertyListXML(makeKextInfoPlist(controllers, "iMac19,1").get()));
    EXPECT_TRUE(matchesGolden(plistText(root.get()) + "\n", "package/Info.plist.txt"));
}

} // namespace
} // namespace korvane
