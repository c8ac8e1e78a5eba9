#include "PackageTestSupport.h"
#include "package/GenerationReport.h"
#include "package/KextInfoPlist.h"
#include "package/KextPackageWriter.h"
#include "support/BuildTree.h"
#include "support/Failure.h"
#include "support/FakeTool.h"
#include "support/TempFolder.h"

#include <gtest/gtest.h>

namespace korvane {
namespace {

namespace fs = std::filesystem;

class KextPackageWriterTest : public ::testing::Test {
  protected:
    void SetUp() override { fs::create_directories(out); }
    fs::path infoPlist() const { return out / "Korvane.kext" / "Contents" / "Info.plist"; }
    std::string report() const { return fileText(out / "Korvane-report.txt"); }

    TempFolder work;
    ToolPaths tools = buildTreeToolPaths();
    fs::path out = work.path() / "out";
    const std::vector<USBControllerMap> controllers{
        makeController("XHC1", 0x8086, 0xa36d, {makePort("HS01", 0x01, "", 0), makePort("SS01", 0x11)})};
};

TEST_F(KextPackageWriterTest, WritesTheInfoPlistAloneInItsBundleAndTheReportBeside) {
    fs::create_directories(out / "Korvane.kext" / "Contents" / "MacOS");
    generateKorvaneKext(out, std::nullopt, controllers, tools, "iMac19,1");
    EXPECT_EQ(std::distance(fs::recursive_directory_iterator(out / "Korvane.kext"), {}), 2)
        << "Contents and Info.plist: an old bundle is replaced whole";
    EXPECT_EQ(plistText(parsePropertyList(fileText(infoPlist())).get()),
              plistText(makeKextInfoPlist(controllers, "iMac19,1").get()));
    EXPECT_EQ(report(), generationReportText(controllers));
}

TEST_F(KextPackageWriterTest, AnEmptyListWritesTheReportAloneAndAnAbsentOneTakesTheScan) {
    generateKorvaneKext(out, std::nullopt, std::vector<USBControllerMap>{}, tools, "Mac");
    EXPECT_FALSE(fs::exists(out / "Korvane.kext"));
    EXPECT_EQ(report(), emptyGenerationReportText());

    std::optional<fs::path> askedFor;
    generateKorvaneKext(out, work.path() / "saved.ioreg", std::nullopt, tools, "Mac", [&](const auto& file) {
        askedFor = file;
        return USBScanResult{controllers};
    });
    EXPECT_EQ(askedFor, work.path() / "saved.ioreg");
    EXPECT_EQ(report(), generationReportText(controllers));

    const ScanSource saved{ScanSource::Kind::savedRegistry, "IOReg.txt", "ioreg text"};
    generateKorvaneKext(out, std::nullopt, controllers, tools, "Mac", {}, saved);
    EXPECT_EQ(report(), generationReportText(controllers, saved))
        << "the report names the source it is given";
}

TEST_F(KextPackageWriterTest, ARejectedListThrowsTheToolsOutputAndWritesNoReport) {
    tools.plutil = writeFakeTool(work.path(), "plutil", "echo 'Info.plist: Property List error'; exit 1");
    const auto generate = [this] { generateKorvaneKext(out, std::nullopt, controllers, tools, "Mac"); };
    EXPECT_EQ(failureOf(generate), "Command failed: " + tools.plutil + " -lint " + infoPlist().string() +
                                       "\nInfo.plist: Property List error\n");
    EXPECT_TRUE(fs::exists(infoPlist())) << "nothing is rolled back";
    EXPECT_FALSE(fs::exists(out / "Korvane-report.txt"));

    tools.plutil = (work.path() / "missing-plutil").string();
    EXPECT_EQ(failureOf(generate), "cannot start " + tools.plutil + ": No such file or directory");
    EXPECT_FALSE(fs::exists(out / "Korvane-report.txt"));
}

TEST_F(KextPackageWriterTest, FoldersAndFilesThatCantBeWrittenThrowThePlatformsError) {
    writeFileAtomically(work.path() / "plain-file", "x");
    for (const auto& list : {controllers, std::vector<USBControllerMap>{}}) {
        EXPECT_THROW(generateKorvaneKext(work.path() / "plain-file", std::nullopt, list, tools, "Mac"),
                     std::system_error);
    }
    fs::create_directories(out / "Korvane-report.txt" / "occupied");
    EXPECT_THROW(generateKorvaneKext(out, std::nullopt, controllers, tools, "Mac"), std::system_error);
}

} // namespace
} // namespace korvane
