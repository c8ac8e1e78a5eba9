#include "mapfile/PortMapPackage.h"

#include "base/FileIO.h"
#include "mapfile/MapMatching.h"
#include "package/KextInfoPlist.h"
#include "support/BuildTree.h"
#include "support/TempFolder.h"
#include "support/TestData.h"
#include "support/USBRecords.h"
#include "tools/ProcessRunner.h"

#include <gmock/gmock.h>

namespace korvane {
namespace {

using testing::UnorderedElementsAre;

// The hand-made map's machine: XHC1, and two controllers named XHC (the
// chipset's and a Thunderbolt one) that only IOPCIPrimaryMatch tells apart.
const std::vector<USBControllerMap> scanned{
    makeController("XHC1", 0x8086, 0xa36d, {makePort("HS01", 1), makePort("HS02", 2), makePort("SS01", 17)}),
    makeController("XHC", 0x8086, 0x06ed, {makePort("HS01", 1)}),
    makeController("XHC", 0x8086, 0x15e9, {makePort("HS01", 1)})};

TEST(PortMapPackage, OurOwnPackageLandsOnTheVeryPortsItWasMadeFrom) {
    std::vector<USBControllerMap> chosen = {
        makeController("XHC1", 0x8086, 0xa36d, {makePort("HS02", 2, "", 255), makePort("SS01", 17, "", 10)})};
    TempFolder folder;
    const auto contents = folder.path() / "Korvane.kext" / "Contents";
    std::filesystem::create_directories(contents);
    writeFileAtomically(contents / "Info.plist",
                        propertyListXML(makeKextInfoPlist(chosen, "iMac19,1").get()));

    const auto hs02 = usbPortStableID(scanned[0], scanned[0].ports[1]);
    const auto ss01 = usbPortStableID(scanned[0], scanned[0].ports[2]);
    for (const auto& path : {folder.path() / "Korvane.kext", folder.path(), contents / "Info.plist"}) {
        const auto parse = readPortMapPackage(path);
        ASSERT_TRUE(parse.package) << path << ": " << parse.reason;
        EXPECT_EQ(parse.package->model, "iMac19,1");
        const auto match = matchPackageToScan(*parse.package, scanned);
        EXPECT_EQ(match.selectedPortIDs, (std::set<std::string>{hs02, ss01}));
        EXPECT_EQ(match.connectors, (std::map<std::string, std::int64_t>{{hs02, 255}, {ss01, 10}}));
        EXPECT_TRUE(match.unmatched.empty());
    }
}

TEST(PortMapPackage, AHandMadeMapInEitherFormatMatchesByNameAndNumberAndListsTheRest) {
    for (const char* file : {"mapfile/packages/handmade-other-tool-Info.plist",
                             "mapfile/packages/handmade-other-tool-Info.bplist"}) {
        SCOPED_TRACE(file);
        const auto parse = parsePackageInfoPlist(testDataBytes(file));
        ASSERT_TRUE(parse.package) << parse.reason;
        EXPECT_EQ(parse.package->model, "iMac19,1");
        EXPECT_EQ(parse.package->ports.size(), 6u) << "the support personality carries no ports";
        const auto match = matchPackageToScan(*parse.package, scanned);
        EXPECT_EQ(match.matchedPorts, 3u);
        EXPECT_THAT(match.selectedPortIDs,
                    UnorderedElementsAre(usbPortStableID(scanned[0], scanned[0].ports[0]),
                                         usbPortStableID(scanned[0], scanned[0].ports[2]),
                                         usbPortStableID(scanned[2], scanned[2].ports[0])))
            << "the Thunderbolt XHC by its primary match, not the chipset's";
        EXPECT_EQ(match.connectors.at(usbPortStableID(scanned[2], scanned[2].ports[0])), 9);
        EXPECT_THAT(match.unmatched,
                    UnorderedElementsAre("XHC1 HS14 (port 14): XHC1 has no port 14 on this machine",
                                         "XHC1 USR1: the package gives no port number",
                                         "EH01 PR11 (port 1): no controller named EH01 on this machine"));
        EXPECT_EQ(portMatchSummary(match.matchedPorts, parse.package->ports.size(), "port"),
                  "3 of 6 ports matched; 3 ports not on this machine");
        // On a machine whose only XHC is the chipset's, the Thunderbolt
        // controller's port lands nowhere: a like name with other IDs is
        // another controller.
        const std::vector<USBControllerMap> chipsetOnly{scanned[0], scanned[1]};
        const auto other = matchPackageToScan(*parse.package, chipsetOnly);
        EXPECT_EQ(other.matchedPorts, 2u);
        using Landed = std::pair<std::size_t, std::size_t>;
        EXPECT_EQ(other.byController, (std::map<std::string, Landed>{
                                          {"EH01", {0, 1}}, {"XHC 0x15e98086", {0, 1}}, {"XHC1", {2, 4}}}))
            << "per controller of the package, what landed of its ports";
        EXPECT_THAT(other.unmatched,
                    testing::Contains(testing::HasSubstr(
                        ": the XHC of this machine has other PCI IDs than the package's (0x15e98086)")));
    }
}

TEST(PortMapPackage, RefusesWhatHoldsNoReadablePortMap) {
    TempFolder temporary;
    const auto& tmp = temporary.path();
    const auto handmade = testDataBytes("mapfile/packages/handmade-other-tool-Info.plist");
    auto file = [&tmp](const std::string& name, const std::string& bytes) {
        std::filesystem::create_directories((tmp / name).parent_path());
        writeFileAtomically(tmp / name, bytes);
        return tmp / name;
    };
    auto zipOf = [&tmp](const std::string& name, const std::filesystem::path& folder) {
        runProcess(buildTreeToolPaths().ditto,
                   {"-c", "-k", "--sequesterRsrc", "--keepParent", folder.string(), (tmp / name).string()},
                   std::nullopt, 60);
        return tmp / name;
    };
    file("two/A.kext/Contents/Info.plist", handmade);
    file("two/B.kext/Contents/Info.plist", handmade);
    file("empty/readme.txt", "no package here");

    const std::pair<std::filesystem::path, const char*> rows[] = {
        {testDataPath("mapfile/packages/hostile-shared-chain.bplist"), "is not a readable property list"},
        {file("cut.plist", handmade.substr(0, handmade.size() / 2)), "is not a readable property list"},
        {file("bundle.plist", "<plist><dict><key>CFBundleName</key><string>X</string></dict></plist>"),
         "(it has no IOKitPersonalities)"},
        {file("support.plist",
              "<plist><dict><key>IOKitPersonalities</key><dict><key>S</key><dict>"
              "<key>IOClass</key><string>AppleUSBXHCISPT</string></dict></dict></dict></plist>"),
         "holds no USB port map"},
        {file("huge.plist", std::string(16 * 1024 * 1024 + 1, ' ')), "is too large"},
        {zipOf("none.zip", tmp / "empty"), "holds no .kext package"},
        {zipOf("two.zip", tmp / "two"), "holds 2 .kext packages"},
        {tmp / "two", "holds several .kext packages"},
        {tmp / "empty", "holds no Contents/Info.plist"},
        {tmp / "missing.kext", "could not be read"},
    };
    for (const auto& [path, reason] : rows) {
        const auto parse = readPortMapPackage(path);
        EXPECT_FALSE(parse.package) << path;
        EXPECT_NE(parse.reason.find(reason), std::string::npos) << path << ": " << parse.reason;
    }
}

} // namespace
} // namespace korvane
