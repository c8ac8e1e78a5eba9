#include "records/FileIO.h"
#include "support/FakeTool.h"
#include "support/Golden.h"
#include "support/ModelFixture.h"
#include "support/Zip.h"

#include <gmock/gmock.h>

namespace korvane {
namespace {

namespace fs = std::filesystem;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

class GenerationRunTest : public ModelFixture {
  protected:
    // XHC1 with a keyboard on HS01, SS01 checked by hand and made internal.
    void loadPorts() {
        auto controller =
            makeController("XHC1", 0x8086, 0xa36d,
                           {makePort("HS01", 1, "Keyboard", 0), makePort("HS02", 2), makePort("SS01", 17)});
        scanShowing({controller});
        model->setPortSelected(controller, controller.ports[2], true);
        model->setConnector(controller, controller.ports[2], 255);
    }
    void generate() {
        model->startCollection();
        scheduler.runUntilIdle();
    }
    fs::path zip() const { return desktopFolder / "Korvane.zip"; }
    fs::path work() const { return desktopFolder / "KorvaneGenerator_Work"; }
    std::string entry(const std::string& name) {
        const auto entries = readZip(zip());
        const auto found = entries.find("KorvaneGenerator_Work/" + name);
        return found == entries.end() ? "" : found->second.contents;
    }
};

TEST_F(GenerationRunTest, ASuccessfulRunLeavesTheZipWithTheCheckedPortsTheReportAndTheLog) {
    model->prepareInitialChecks();
    loadPorts();
    fs::create_directories(work() / "leftover");
    writeFileAtomically(work() / CollectorModel::workFolderMarkName, ""); // a failed run's
    writeFileAtomically(zip(), "old");

    generate();

    EXPECT_FALSE(model->isRunning());
    EXPECT_EQ(model->lastZipURL(), zip());
    EXPECT_THAT(recordingDesktop.sounds, ElementsAre("Glass"));
    EXPECT_FALSE(fs::exists(work()));
    std::vector<std::string> entries;
    for (const auto& [name, contents] : readZip(zip())) {
        entries.push_back(name);
    }
    EXPECT_THAT(entries, ElementsAre("KorvaneGenerator_Work/", "KorvaneGenerator_Work/Korvane-report.txt",
                                     "KorvaneGenerator_Work/Korvane.kext/",
                                     "KorvaneGenerator_Work/Korvane.kext/Contents/",
                                     "KorvaneGenerator_Work/Korvane.kext/Contents/Info.plist",
                                     "KorvaneGenerator_Work/KorvaneGenerator-log.txt"));
    std::string log;
    for (const auto& line : logLines()) {
        log += line + "\n";
    }
    for (auto at = log.find(home.path().string()); at != std::string::npos;
         at = log.find(home.path().string())) {
        log.replace(at, home.path().string().size(), "HOME");
    }
    EXPECT_TRUE(matchesGolden(log, "collector/successful-run-log.txt"));
    EXPECT_TRUE(model->logText().starts_with("[14:03:09] App started.\n"));
    EXPECT_TRUE(entry("KorvaneGenerator-log.txt").ends_with("] Korvane.kext step completed.\n"))
        << "the log file is written before the ZIP lines";

    const auto plist = entry("Korvane.kext/Contents/Info.plist");
    EXPECT_THAT(plist, HasSubstr("<key>SS01</key>"));
    EXPECT_THAT(plist, Not(HasSubstr("<key>HS02</key>"))) << "unchecked ports stay out";
    EXPECT_THAT(plist, HasSubstr("<integer>255</integer>")) << "the user's connector wins";

    model->openDesktopZip();
    EXPECT_THAT(recordingDesktop.revealed, ElementsAre(zip()));
}

class TargetModelRunTest : public GenerationRunTest {
  protected:
    void customise(CollectorEnvironment& environment) override {
        environment.machineModel = [this] {
            ++lookups;
            return machineSays;
        };
    }
    std::optional<std::string> machineSays;
    int lookups = 0;
};

// The user's choice, else what the machine says, else "Mac"; a run asks the
// machine itself when nobody has, and only once.
TEST_F(TargetModelRunTest, TheRunWritesTheChoiceElseTheMachinesModelElseMac) {
    using Source = TargetMacModel::Source;
    EXPECT_EQ(model->targetMacModel(), (TargetMacModel{"Mac", Source::fallback}));
    loadPorts();
    model->setTargetModelChoice("  iMac19,1 ");
    generate();
    EXPECT_THAT(entry("Korvane.kext/Contents/Info.plist"), HasSubstr("<key>iMac19,1-XHC1</key>"));
    EXPECT_EQ(lookups, 0);

    model->setTargetModelChoice("");
    machineSays = " MacBookPro15,2\n";
    generate();
    EXPECT_EQ(model->targetMacModel(), (TargetMacModel{"MacBookPro15,2", Source::thisMachine}));
    EXPECT_THAT(entry("Korvane.kext/Contents/Info.plist"), HasSubstr("<key>MacBookPro15,2-XHC1</key>"));
    model->lookUpMachineModel();
    scheduler.runUntilIdle();
    EXPECT_EQ(lookups, 1);
}

TEST_F(GenerationRunTest, WithoutAPortListTheRunResetsFirstAndAnEmptyScanStillSucceeds) {
    generate();
    EXPECT_THAT(logLines(),
                Contains("No USB port list was loaded. Running Reset Ports before generation..."));
    EXPECT_THAT(logLines(), Contains("Generating Korvane.kext with 0 enabled port(s)..."));
    EXPECT_FALSE(entry("Korvane-report.txt").empty());
    EXPECT_EQ(entry("Korvane.kext/Contents/Info.plist"), "");
    EXPECT_THAT(recordingDesktop.sounds, ElementsAre("Glass"));
}

TEST_F(GenerationRunTest, ARunDuringAScanTakesWhatTheScanLeavesAndAStartDuringARunChangesNothing) {
    scans = {{{makeController("XHC1", 0x8086, 0xa36d, {makePort("HS01", 1, "Keyboard")})}}};
    model->scanUSBPorts();
    model->startCollection(); // a scan is no reason to refuse a run
    const auto log = model->logText();
    model->startCollection();
    EXPECT_EQ(model->logText(), log);
    EXPECT_EQ(scheduler.pendingBackgroundTasks(), 2u);
    scheduler.runUntilIdle();
    EXPECT_EQ(scanCount, 1) << "the loaded list is used, no second scan";
    EXPECT_THAT(logLines(), Contains("Generating Korvane.kext with 1 enabled port(s)..."));

    generate();
    const auto logFile = entry("KorvaneGenerator-log.txt");
    EXPECT_LT(logFile.find("ZIP created successfully"), logFile.rfind(std::string(40, '-')))
        << "a second run's log holds the first run's lines";
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
    EXPECT_THAT(entry("KorvaneGenerator-log.txt"),
                HasSubstr("Target Desktop: " + (home.path() / "Desktop-XX-MASKED-UUID").string()));
    EXPECT_THAT(entry("KorvaneGenerator-log.txt"), Not(HasSubstr(uuid)));
}

TEST_F(GenerationRunTest, ADesktopThatIsAFileEndsInOneErrorLine) {
    fs::remove_all(desktopFolder);
    writeFileAtomically(desktopFolder, "not a folder");
    generate();
    EXPECT_EQ(logLines().back(), "ERROR: Not a directory");
    EXPECT_THAT(recordingDesktop.sounds, ElementsAre("Basso"));
    EXPECT_FALSE(model->isRunning());
    EXPECT_FALSE(model->lastZipURL());
}

TEST_F(GenerationRunTest, OnlyAnEmptyOrMarkedWorkFolderIsRemovedAnythingElseIsTheUsers) {
    const std::pair<std::function<void()>, bool> rows[] = {
        {[&] { fs::create_directories(work()); }, true},
        {[&] { fs::create_directories(work() / "mine"); }, false},
        {[&] { writeFileAtomically(work(), "mine"); }, false},
        {[&] { fs::create_directory_symlink(home.path(), work()); }, false},
    };
    for (const auto& [make, isRemoved] : rows) {
        fs::remove_all(desktopFolder);
        fs::create_directories(desktopFolder);
        make();
        recordingDesktop.sounds.clear();
        generate();
        EXPECT_THAT(recordingDesktop.sounds, ElementsAre(isRemoved ? "Glass" : "Basso"));
        if (!isRemoved) {
            EXPECT_EQ(logLines().back(),
                      "ERROR: " + work().string() +
                          " was not made by KorvaneGenerator and is left as it is. Move it "
                          "away from the Desktop or rename it, then generate again.");
            EXPECT_TRUE(fs::exists(fs::symlink_status(work())));
        }
    }
}

// Another run holds the work folder when this one first asks.
struct BusyWorkFolderLocks final : WorkFolderLocks {
    std::unique_ptr<WorkFolderLock> tryLock(const fs::path&) override { return nullptr; }
    std::unique_ptr<WorkFolderLock> lock(const fs::path&) override {
        return std::make_unique<WorkFolderLock>();
    }
};

class LockedRunTest : public GenerationRunTest {
    void customise(CollectorEnvironment& environment) override {
        environment.workFolderLocks = std::make_shared<BusyWorkFolderLocks>();
    }
};

TEST_F(LockedRunTest, ARunWaitsForAnotherOnTheSameWorkFolderAndSaysSo) {
    generate();
    EXPECT_THAT(logLines(), Contains("Another KorvaneGenerator run is using " + work().string() +
                                     "; waiting for it to end..."));
    EXPECT_THAT(recordingDesktop.sounds, ElementsAre("Glass"));
}

// A stand-in for one tool that fails as the row says.
class BrokenToolRunTest : public GenerationRunTest {
  protected:
    void customise(CollectorEnvironment& environment) override {
        environment.tools.ditto = writeFakeTool(home.path(), "ditto", ditto);
        environment.tools.plutil =
            plutil.empty() ? environment.tools.plutil : writeFakeTool(home.path(), "plutil", plutil);
        environment.dittoTimeout = 0.5;
    }
    std::string ditto = "echo 'disk full' >&2\nexit 1";
    std::string plutil;
};

TEST_F(BrokenToolRunTest, AFailingDittoKeepsTheWorkFolderAndTheToolsWords) {
    loadPorts();
    writeFileAtomically(zip(), "old");
    generate();
    // The tool's output, with its own line feed, follows the message's first line.
    EXPECT_TRUE(model->logText().ends_with("] ERROR: Command failed: " + (home.path() / "ditto").string() +
                                           " -c -k --sequesterRsrc --keepParent " + work().string() + " " +
                                           zip().string() + "\ndisk full\n\n"))
        << model->logText();
    EXPECT_TRUE(fs::exists(work() / "KorvaneGenerator-log.txt"));
    EXPECT_TRUE(fs::exists(work() / CollectorModel::workFolderMarkName)) << "for the next run to remove";
    EXPECT_FALSE(fs::exists(zip())) << "the old ZIP went in the same step";
    EXPECT_THAT(recordingDesktop.sounds, ElementsAre("Basso"));
}

class HangingDittoRunTest : public BrokenToolRunTest {
    void customise(CollectorEnvironment& environment) override {
        ditto = "exec sleep 30";
        BrokenToolRunTest::customise(environment);
    }
};

TEST_F(HangingDittoRunTest, AHangingDittoTimesOut) {
    loadPorts();
    generate();
    EXPECT_THAT(model->logText(),
                HasSubstr("] ERROR: Timeout after 0s: " + (home.path() / "ditto").string()));
    EXPECT_FALSE(model->isRunning());
}

class RejectingPlutilRunTest : public BrokenToolRunTest {
    void customise(CollectorEnvironment& environment) override {
        plutil = "echo \"$2: Encountered unknown tag\"\nexit 1";
        BrokenToolRunTest::customise(environment);
    }
};

TEST_F(RejectingPlutilRunTest, ARejectedPropertyListEndsTheRunBeforeTheZip) {
    loadPorts();
    generate();
    const auto plist = work() / "Korvane.kext" / "Contents" / "Info.plist";
    EXPECT_THAT(model->logText(),
                HasSubstr("] ERROR: Command failed: " + (home.path() / "plutil").string() + " -lint " +
                          plist.string() + "\n" + plist.string() + ": Encountered unknown tag\n"));
    EXPECT_THAT(logLines(), Not(Contains("Korvane.kext step completed.")));
    EXPECT_FALSE(fs::exists(zip()));
    EXPECT_TRUE(fs::exists(plist)) << "what was written stays for the user to see";
}

} // namespace
} // namespace korvane
