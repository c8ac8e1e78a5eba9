#include "PackageTestSupport.h"
#include "package/KextInfoPlist.h"
#include "package/MergePersonalityNames.h"
#include "support/Golden.h"

#include <gtest/gtest.h>

namespace korvane {
namespace {

// One controller for each rule of the tree; the golden file is the whole
// Info.plist they give, read back through XML as a reader of the file sees it.
TEST(KextInfoPlist, EveryRuleOfTheTreeInOnePackage) {
    auto titanRidge = makeController("XHC2", 0x8086, 0x15ec, {makePort("SSP1", 3, "", 9)});
    titanRidge.usbDeviceName = "Titan Ridge"; // the support personality's model
    const std::vector<USBControllerMap> controllers = {
        // The highest written number counts; zero and empty port data are left out.
        makeController("XHC1", 0x8086, 0xa36d,
                       {makePort("HS01", 1, "", 0), makePort("SS01", 17), makePort("ZERO", 0),
                        USBPortMap{"EMPTY", "", 3, {}, "", ""}}),
        // Like IDs share the first support personality and keep their merges.
        titanRidge,
        makeController("XHC3", 0x8086, 0x15ec, {makePort("SSP1", 3, "", 9)}),
        // Of two equal port names the higher number stays; long data keeps every byte.
        makeController("PXSX", 0x1b21, 0x2142,
                       {makePort("HS01", 2, "", 0), USBPortMap{"HS01", "", 255, {5, 0, 0, 0, 0xff}, "", ""}}),
        // No ports: the template's ports and count.
        makeController("XHC4", 0x8086, 0x34ed),
        // No ports and no template: a support personality alone.
        makeController("XHC5", 0x1002, 1),
        // No identity: nothing at all.
        makeController("XHC6", 0, 0xa36d, {makePort("HS01", 1)}),
    };
    const PlistPtr root =
        parsePropertyList(propertyListXML(makeKextInfoPlist(controllers, "iMac19,1").get()));
    EXPECT_TRUE(matchesGolden(plistText(root.get()) + "\n", "package/Info.plist.txt"));
}

// macOS tells merge personalities apart by name and PCI ID together: a name
// taken by another PCI ID gets the ID appended; only where both are equal
// does the later one replace the earlier, and the fronts are told either way.
TEST(KextInfoPlist, LikeNamedControllersKeepTheirOwnMergeUnlessThePCIIDIsEqualToo) {
    auto xhc = [](std::int64_t device, std::string location, std::uint8_t port) {
        return USBControllerMap{"XHC", location, 0x8086, device, "", "", "", {makePort("HS01", port)}};
    };
    const std::vector<USBControllerMap> chipsetAndThunderbolt{xhc(0x02ed, "14000000", 1),
                                                              xhc(0x15e9, "00000000", 2)};
    const PlistPtr both = makeKextInfoPlist(chipsetAndThunderbolt, "iMac19,1");
    auto port = [](plist_t root, const std::string& name) {
        return plistText(
            at(root, {"IOKitPersonalities", name, "IOProviderMergeProperties", "ports", "HS01", "port"}));
    };
    EXPECT_EQ(port(both.get(), "iMac19,1-XHC"), "<01000000>");
    EXPECT_EQ(port(both.get(), "iMac19,1-XHC 8086_15E9"), "<02000000>");
    EXPECT_EQ(plistText(at(both.get(), {"IOKitPersonalities", "iMac19,1-XHC 8086_15E9", "IONameMatch"})),
              "\"XHC\"");
    EXPECT_EQ(
        mergePersonalityNotes(chipsetAndThunderbolt, "iMac19,1"),
        std::vector<std::string>{"XHC@00000000 (8086:15E9) shares its name with a controller of another "
                                 "PCI ID: its merge personality is named iMac19,1-XHC 8086_15E9 so that "
                                 "both are kept."});

    const std::vector<USBControllerMap> twins{xhc(0x15e9, "00000000", 1), xhc(0x15e9, "01000000", 2)};
    const PlistPtr one = makeKextInfoPlist(twins, "Mac");
    EXPECT_EQ(port(one.get(), "Mac-XHC"), "<02000000>") << "the later one's ports";
    EXPECT_FALSE(at(one.get(), {"IOKitPersonalities", "Mac-XHC 8086_15E9"}));
    EXPECT_EQ(
        mergePersonalityNotes(twins, "Mac"),
        std::vector<std::string>{"XHC@01000000 (8086:15E9) has the name and PCI ID of XHC@00000000 "
                                 "(8086:15E9), which macOS can't tell apart: the package keeps one merge "
                                 "personality, Mac-XHC, with the ports of XHC@01000000 (8086:15E9)."});
}

} // namespace
} // namespace korvane
