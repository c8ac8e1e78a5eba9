#include "PackageTestSupport.h"
#include "package/GenerationReport.h"
#include "package/KextPackageWriter.h"
#include "package/PackageConstants.h"
#include "records/CollectorError.h"
#include "support/BuildTree.h"

#include <gtest/gtest.h>

namespace korvane {
namespace {

using namespace korvane;
namespace fs = std::filesystem;

class KextPackageWriterTest : public ::testing::Test {
  protected:
    void SetUp() override {
        tools = buildTreeToolPaths();
        if (!fs::exists(tools.plutil)) {
            GTEST_SKIP() << "the plutil stand-in is not built at " << tools.plutil;
        }
        tools.sysctl = (work.path() / "missing-sysctl").string(); // "Mac" on every platform
        out = work.path() / "out";
        fs::create_directories(out);
    }
    fs::path infoPlist() const { return out / "Korvane.kext" / "Contents" / "Info.plist"; }
    std::string report() const { return fileText(out / "Korvane-report.txt"); }

    TemporaryFolder work;
    ToolPaths tools;
    fs::path out;
    const std::vector<USBControllerMap> workedCase{
        makeController("XHC1", 0x8086, 0xa36d,
                       {makePort("HS01", {0x01, 0, 0, 0}, 0), makePort("SS01", {0x11, 0, 0, 0}, 3)})};
};

TEST_F(KextPackageWriterTest, WorkedCaseWritesExactlyThePrescribedTree) {
    generateKorvaneKext(out, std::nullopt, workedCase, tools);

    EXPECT_EQ(std::distance(fs::recursive_directory_iterator(out / "Korvane.kext"), {}), 2)
        << "Contents, Info.plist";
    const auto root = parsePropertyList(fileText(infoPlist()));
    ASSERT_TRUE(root);
    EXPECT_EQ(
        describe(root.get()),
        "{CFBundleDevelopmentRegion=\"English\", CFBundleGetInfoString=\"1.0 " + std::string(makerLine) +
            "\", CFBundleIdentifier=\"com.brindlewick.Korvane\", CFBundleInfoDictionaryVersion=\"6.0\", "
            "CFBundleName=\"Korvane\", CFBundlePackageType=\"KEXT\", CFBundleShortVersionString=\"1.0\", "
            "CFBundleSignature=\"????\", CFBundleVersion=\"1.0\", IOKitPersonalities={"
            "AppleUSBXHCISPT Intel_8086_A36D={CFBundleIdentifier=\"com.apple.driver.usb.AppleUSBXHCIPCI\", "
            "IOClass=\"AppleUSBXHCISPT\", IOPCIPauseCompatible=true, IOPCIPrimaryMatch=\"0xa36d8086\", "
            "IOPCITunnelCompatible=true, IOProbeScore=900, IOProviderClass=\"IOPCIDevice\", "
            "model=\"8086:A36D\"}, "
            "Mac-XHC1={CFBundleIdentifier=\"com.apple.driver.AppleUSBHostMergeProperties\", "
            "IOClass=\"AppleUSBHostMergeProperties\", IONameMatch=\"XHC1\", IOPCIPauseCompatible=true, "
            "IOPCIPrimaryMatch=\"0xa36d8086\", IOPCITunnelCompatible=true, IOProbeScore=5000, "
            "IOProviderClass=\"AppleUSBXHCIPCI\", IOProviderMergeProperties={kUSBSleepPortCurrentLimit=2100, "
            "kUSBSleepPowerSupply=5100, kUSBWakePortCurrentLimit=2100, kUSBWakePowerSupply=5100, "
            "port-count=<11000000>, ports={"
            "HS01={UsbConnector=0, name=\"HS01\", port=<01000000>, usb-port-number=<01000000>, "
            "usb-port-type=0}, "
            "SS01={UsbConnector=3, name=\"SS01\", port=<11000000>, usb-port-number=<11000000>, "
            "usb-port-type=3}"
            "}}, model=\"Mac\"}}, OSBundleRequired=\"Root\"}");
    EXPECT_EQ(report(), generationReportText(workedCase));
}

TEST_F(KextPackageWriterTest, EmptyListWritesOnlyTheNoControllerReport) {
    generateKorvaneKext(out, std::nullopt, std::vector<USBControllerMap>{}, tools);
    EXPECT_FALSE(fs::exists(out / "Korvane.kext"));
    EXPECT_EQ(report(), std::string(emptyGenerationReportText));
    EXPECT_TRUE(report().ends_with("The ZIP was completed without USB configuration data."))
        << "no final line feed";
}

TEST_F(KextPackageWriterTest, AbsentListTakesTheScanOfTheGivenDump) {
    std::optional<fs::path> askedFor;
    generateKorvaneKext(out, work.path() / "saved.ioreg", std::nullopt, tools, [&](const auto& file) {
        askedFor = file;
        return USBScanResult{workedCase};
    });
    EXPECT_EQ(askedFor, work.path() / "saved.ioreg");
    EXPECT_TRUE(fs::exists(infoPlist()));
}

TEST_F(KextPackageWriterTest, OldBundleIsReplacedWholeAndSysctlNamesTheMerges) {
    fs::create_directories(out / "Korvane.kext" / "Contents" / "MacOS");
    tools.sysctl = writeFakeTool(work.path(), "sysctl", "  iMac19,1  ", 0);
    generateKorvaneKext(out, std::nullopt, workedCase, tools);
    EXPECT_FALSE(fs::exists(out / "Korvane.kext" / "Contents" / "MacOS"));
    const auto root = parsePropertyList(fileText(infoPlist()));
    EXPECT_EQ(describe(at(root.get(), {"IOKitPersonalities", "iMac19,1-XHC1", "model"})), "\"iMac19,1\"");
}

TEST_F(KextPackageWriterTest, FolderThatIsAFileFailsWithThePlatformsError) {
    writeFile(work.path() / "plain-file", "x");
    EXPECT_THROW(generateKorvaneKext(work.path() / "plain-file", std::nullopt, workedCase, tools),
                 std::system_error);
    EXPECT_THROW(
        generateKorvaneKext(work.path() / "plain-file", std::nullopt, std::vector<USBControllerMap>{}, tools),
        std::system_error);
}

TEST_F(KextPackageWriterTest, FailedLintThrowsTheToolsOutputAndWritesNoReport) {
    tools.plutil = writeFakeTool(work.path(), "plutil", "Info.plist: Property List error", 1);
    try {
        generateKorvaneKext(out, std::nullopt, workedCase, tools);
        ADD_FAILURE() << "no error";
    } catch (const CollectorError& error) {
        EXPECT_EQ(error, CollectorError::operationFailed("Command failed: " + tools.plutil + " -lint " +
                                                         infoPlist().string() +
                                                         "\nInfo.plist: Property List error\n"));
    }
    EXPECT_TRUE(fs::exists(infoPlist())) << "nothing is rolled back";
    EXPECT_FALSE(fs::exists(out / "Korvane-report.txt"));
}

TEST_F(KextPackageWriterTest, MissingPlutilAndUnwritableReportThrowThePlatformsError) {
    tools.plutil = (work.path() / "missing-plutil").string();
    EXPECT_THROW(generateKorvaneKext(out, std::nullopt, workedCase, tools), std::system_error);
    EXPECT_FALSE(fs::exists(out / "Korvane-report.txt"));

    tools = buildTreeToolPaths();
    fs::create_directories(out / "Korvane-report.txt" / "occupied");
    EXPECT_THROW(generateKorvaneKext(out, std::nullopt, workedCase, tools), std::system_error);
    EXPECT_TRUE(fs::exists(infoPlist()));
}

TEST(MachineModel, FailingOrSilentToolGivesMac) {
    TemporaryFolder folder;
    EXPECT_EQ(machineModel(writeFakeTool(folder.path(), "fails", "sysctl: unknown oid", 1)), "Mac");
    EXPECT_EQ(machineModel(writeFakeTool(folder.path(), "blank", "  ", 0)), "Mac");
}

} // namespace
} // namespace korvane
