#include "CollectorFixture.h"
#include "records/FileIO.h"
#include "support/FakeTool.h"

#include <gmock/gmock.h>
#include <zip.h>

namespace korvane {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

std::vector<std::string> zipEntries(const fs::path& path) {
    std::vector<std::string> names;
    int error = 0;
    if (zip_t* archive = zip_open(path.c_str(), ZIP_RDONLY, &error)) {
        for (zip_int64_t i = 0; i < zip_get_num_entries(archive, 0); ++i) {
            const std::string name = zip_get_name(archive, static_cast<zip_uint64_t>(i), 0);
            if (name.back() != '/') {
                names.push_back(name);
            }
        }
        zip_close(archive);
    }
    std::sort(names.begin(), names.end());
    return names;
}

std::string zipEntry(const fs::path& path, const std::string& name) {
    std::string contents;
    int error = 0;
    if (zip_t* archive = zip_open(path.c_str(), ZIP_RDONLY, &error)) {
        zip_stat_t stat;
        if (zip_stat(archive, name.c_str(), 0, &stat) == 0) {
            if (zip_file_t* file = zip_fopen(archive, name.c_str(), 0)) {
                contents.resize(stat.size);
                zip_fread(file, contents.data(), stat.size);
                zip_fclose(file);
            }
        }
        zip_close(archive);
    }
    return contents;
}

class GenerationRunTest : public CollectorFixture {
  protected:
    void loadPorts() {
        auto controller =
            makeController("XHC1", 0x8086, 0xa36d,
                           {makePort("HS01", 1, "Keyboard", 0), makePort("HS02", 2), makePort("SS01", 17)});
        scans = {{{controller}}};
        model->scanUSBPorts();
        scheduler.runUntilIdle();
        model->setPortSelected(controller, controller.ports[2], true);
        model->setConnector(controller, controller.ports[2], 255);
    }

    void generate() {
        model->startCollection();
        scheduler.runUntilIdle();
    }

    fs::path zip() const { return desktop() / "Korvane.zip"; }
};

TEST_F(GenerationRunTest, ASuccessfulRunLeavesTheZipWithThreeEntries) {
    model->prepareInitialChecks();
    loadPorts();
    fs::create_directories(desktop() / "KorvaneGenerator_Work" / "leftover");
    writeFileAtomically(zip(), "old");

    generate();

    EXPECT_FALSE(model->isRunning());
    EXPECT_EQ(model->lastZipURL(), zip());
    EXPECT_THAT(recordingDesktop.sounds, ElementsAre("Glass"));
    EXPECT_FALSE(fs::exists(desktop() / "KorvaneGenerator_Work"));
    EXPECT_THAT(zipEntries(zip()), ElementsAre("KorvaneGenerator_Work/Korvane-report.txt",
                                               "KorvaneGenerator_Work/Korvane.kext/Contents/Info.plist",
                                               "KorvaneGenerator_Work/KorvaneGenerator-log.txt"));

    const auto work = (desktop() / "KorvaneGenerator_Work").string();
    EXPECT_THAT(logLines(),
                ElementsAre("App started.", "Target Desktop: " + desktop().string(),
                            "Mode: standalone Korvane.kext generation only.",
                            "No ACPI, audio, video, power or system dumps are collected by this app.",
                            "Scanning USB controllers and ports for editing...",
                            "USB ports reset: 1 controller(s), 1 active USB port(s) selected automatically.",
                            std::string(40, '-'), "Starting Korvane.kext generation.",
                            "Temporary folder created: " + work,
                            "Generating Korvane.kext with 2 enabled port(s)...",
                            "Korvane.kext step completed.", "Creating ZIP on Desktop...",
                            "ZIP created successfully: " + zip().string(),
                            "Temporary Desktop folder removed after ZIP creation."));
    EXPECT_THAT(model->logText(), StartsWith("[14:03:09] App started.\n"));

    const auto logFile = zipEntry(zip(), "KorvaneGenerator_Work/KorvaneGenerator-log.txt");
    EXPECT_THAT(logFile, testing::EndsWith("] Korvane.kext step completed.\n"))
        << "written before the ZIP lines";

    const auto plist = zipEntry(zip(), "KorvaneGenerator_Work/Korvane.kext/Contents/Info.plist");
    EXPECT_THAT(plist, HasSubstr("<key>HS01</key>"));
    EXPECT_THAT(plist, HasSubstr("<key>SS01</key>"));
    EXPECT_THAT(plist, testing::Not(HasSubstr("<key>HS02</key>"))) << "unchecked ports stay out";
    EXPECT_THAT(plist, HasSubstr("<integer>255</integer>")) << "the user's connector wins";

    model->openDesktopZip();
    EXPECT_THAT(recordingDesktop.revealed, ElementsAre(zip()));
}

TEST_F(GenerationRunTest, WithoutAPortListTheRunResetsFirstAndAnEmptyScanStillSucceeds) {
    generate();
    EXPECT_THAT(logLines(),
                testing::Contains("No USB port list was loaded. Running Reset Ports before generation..."));
    EXPECT_THAT(logLines(), testing::Contains("Generating Korvane.kext with 0 enabled port(s)..."));
    EXPECT_THAT(zipEntries(zip()), ElementsAre("KorvaneGenerator_Work/Korvane-report.txt",
                                               "KorvaneGenerator_Work/KorvaneGenerator-log.txt"));
    EXPECT_THAT(recordingDesktop.sounds, ElementsAre("Glass"));
}

TEST_F(GenerationRunTest, ASecondRunsLogHoldsTheFirstRunsLines) {
    loadPorts();
    generate();
    generate();
    const auto logFile = zipEntry(zip(), "KorvaneGenerator_Work/KorvaneGenerator-log.txt");
    const auto firstZipLine = logFile.find("ZIP created successfully");
    const auto secondSeparator = logFile.rfind(std::string(40, '-'));
    ASSERT_NE(firstZipLine, std::string::npos);
    EXPECT_LT(firstZipLine, secondSeparator);
}

TEST_F(GenerationRunTest, AStartDuringARunChangesNothing) {
    loadPorts();
    model->startCollection();
    const auto log = model->logText();
    model->startCollection();
    EXPECT_EQ(scheduler.pendingBackgroundTasks(), 1u);
    EXPECT_EQ(model->logText(), log);
    EXPECT_FALSE(model->lastZipURL());
}

class MaskedLogRunTest : public GenerationRunTest {
  protected:
    static constexpr const char* uuid = "12345678-ABCD-1234-ABCD-1234567890AB";
    void customise(CollectorEnvironment&) override {
        desktopFolder = home.path() / (std::string("Desktop-") + uuid);
        fs::create_directories(desktopFolder);
    }
};

TEST_F(MaskedLogRunTest, TheLogFileIsMaskedWhileTheLogStaysPlain) {
    model->prepareInitialChecks();
    generate();
    EXPECT_THAT(model->logText(), HasSubstr(uuid));
    const auto logFile = zipEntry(zip(), "KorvaneGenerator_Work/KorvaneGenerator-log.txt");
    EXPECT_THAT(logFile, HasSubstr("Target Desktop: " + (home.path() / "Desktop-XX-MASKED-UUID").string()));
    EXPECT_THAT(logFile, testing::Not(HasSubstr(uuid)));
}

TEST_F(GenerationRunTest, ARunStartedDuringAScanTakesWhatTheScanLeaves) {
    auto controller = makeController("XHC1", 0x8086, 0xa36d, {makePort("HS01", 1, "Keyboard")});
    scans = {{{controller}}};
    model->scanUSBPorts();
    model->startCollection(); // a scan is no reason to refuse a run
    EXPECT_EQ(scheduler.pendingBackgroundTasks(), 2u);
    scheduler.runUntilIdle();
    EXPECT_EQ(scanCount, 1) << "the loaded list is used, no second scan";
    EXPECT_THAT(logLines(), testing::Contains("Generating Korvane.kext with 1 enabled port(s)..."));
    EXPECT_TRUE(model->lastZipURL());
}

class FailingRunTest : public GenerationRunTest {};

TEST_F(FailingRunTest, ADesktopThatIsAFileEndsInOneErrorLine) {
    fs::remove_all(desktop());
    writeFileAtomically(desktop(), "not a folder");
    generate();
    EXPECT_EQ(logLines().back(), "ERROR: Not a directory");
    EXPECT_THAT(recordingDesktop.sounds, ElementsAre("Basso"));
    EXPECT_FALSE(model->isRunning());
    EXPECT_FALSE(model->lastZipURL());
}

class BrokenDittoRunTest : public GenerationRunTest {
  protected:
    void customise(CollectorEnvironment& environment) override {
        environment.tools.ditto = writeFakeTool(home.path(), "ditto", script);
        environment.dittoTimeout = 0.5;
    }
    std::string script = "echo 'disk full' >&2\nexit 1";
};

TEST_F(BrokenDittoRunTest, AFailingDittoKeepsTheWorkFolder) {
    loadPorts();
    writeFileAtomically(zip(), "old");
    generate();
    // The tool's output, with its own line feed, follows the message's first line.
    EXPECT_THAT(model->logText(),
                testing::EndsWith("] ERROR: Command failed: " + (home.path() / "ditto").string() +
                                  " -c -k --sequesterRsrc --keepParent " +
                                  (desktop() / "KorvaneGenerator_Work").string() + " " + zip().string() +
                                  "\ndisk full\n\n"));
    EXPECT_TRUE(fs::exists(desktop() / "KorvaneGenerator_Work" / "KorvaneGenerator-log.txt"));
    EXPECT_FALSE(fs::exists(zip())) << "the old ZIP went in the same step";
    EXPECT_THAT(recordingDesktop.sounds, ElementsAre("Basso"));
}

class BrokenPlutilRunTest : public GenerationRunTest {
  protected:
    void customise(CollectorEnvironment& environment) override {
        environment.tools.plutil =
            writeFakeTool(home.path(), "plutil", "echo \"$2: Encountered unknown tag\"\nexit 1");
    }
};

TEST_F(BrokenPlutilRunTest, ARejectedPropertyListEndsTheRunBeforeTheZip) {
    loadPorts();
    generate();
    const auto plist = desktop() / "KorvaneGenerator_Work" / "Korvane.kext" / "Contents" / "Info.plist";
    EXPECT_THAT(model->logText(),
                HasSubstr("] ERROR: Command failed: " + (home.path() / "plutil").string() + " -lint " +
                          plist.string() + "\n" + plist.string() + ": Encountered unknown tag\n"));
    EXPECT_THAT(logLines(), testing::Not(testing::Contains("Korvane.kext step completed.")));
    EXPECT_FALSE(fs::exists(zip()));
    EXPECT_TRUE(fs::exists(plist)) << "what was written stays for the user to see";
    EXPECT_THAT(recordingDesktop.sounds, ElementsAre("Basso"));
}

class HangingDittoRunTest : public BrokenDittoRunTest {
  protected:
    void customise(CollectorEnvironment& environment) override {
        script = "exec sleep 30";
        BrokenDittoRunTest::customise(environment);
    }
};

TEST_F(HangingDittoRunTest, AHangingDittoTimesOut) {
    loadPorts();
    generate();
    EXPECT_THAT(model->logText(),
                HasSubstr("] ERROR: Timeout after 0s: " + (home.path() / "ditto").string()));
    EXPECT_THAT(recordingDesktop.sounds, ElementsAre("Basso"));
    EXPECT_FALSE(model->isRunning());
}

} // namespace
} // namespace korvane
