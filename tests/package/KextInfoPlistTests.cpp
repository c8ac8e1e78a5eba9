#include "PackageTestSupport.h"
#include "package/KextInfoPlist.h"
#include "support/Golden.h"

#include <gtest/gtest.h>

namespace korvane {
namespace {

// One controller for each rule of the tree; the golden file is the whole
// Info.plist they give, read back through XML as a reader of the file sees it.
TEST(KextInfoPlist, EveryRuleOfTheTreeInOnePackage) {
    auto titanRidge = makeController("XHC2", 0x8086, 0x15ec, {makePort("SSP1", {3, 0, 0, 0}, 9)});
    titanRidge.usbDeviceName = "Titan Ridge"; // the support personality's model
    const std::vector<USBControllerMap> controllers = {
        // The highest written number counts; zero and empty port data are left out.
        makeController("XHC1", 0x8086, 0xa36d,
                       {makePort("HS01", {1, 0, 0, 0}, 0), makePort("SS01", {17, 0, 0, 0}),
                        makePort("ZERO", {0, 0, 0, 0}), makePort("EMPTY", {})}),
        // Like IDs share the first support personality and keep their merges.
        titanRidge,
        makeController("XHC3", 0x8086, 0x15ec, {makePort("SSP1", {3, 0, 0, 0}, 9)}),
        // Of two equal port names the higher number stays; long data keeps every byte.
        makeController("PXSX", 0x1b21, 0x2142,
                       {makePort("HS01", {2, 0, 0, 0}, 0), makePort("HS01", {5, 0, 0, 0, 0xff}, 255)}),
        // No ports: the template's ports and count.
        makeController("XHC4", 0x8086, 0x34ed),
        // No ports and no template: a support personality alone.
        makeController("XHC5", 0x1002, 1),
        // No identity: nothing at all.
        makeController("XHC6", 0, 0xa36d, {makePort("HS01", {1, 0, 0, 0})}),
    };
    const PlistPtr root =
        parsePropertyList(propertyListXML(makeKextInfoPlist(controllers, "iMac19,1").get()));
    EXPECT_TRUE(matchesGolden(plistText(root.get()) + "\n", "package/Info.plist.txt"));
}

TEST(KextInfoPlist, ALaterControllerOfTheSameNameReplacesTheMerge) {
    const PlistPtr root =
        makeKextInfoPlist({makeController("XHC1", 0x8086, 0xa36d, {makePort("HS01", {1, 0, 0, 0})}),
                           makeController("XHC1", 0x1b21, 0x2142, {makePort("PRT1", {2, 0, 0, 0})})},
                          "Mac");
    const plist_t ports =
        at(root.get(), {"IOKitPersonalities", "Mac-XHC1", "IOProviderMergeProperties", "ports"});
    EXPECT_TRUE(at(ports, {"PRT1"}));
    EXPECT_FALSE(at(ports, {"HS01"}));
}

} // namespace
} // namespace korvane
