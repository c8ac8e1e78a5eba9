#include "base/FileIO.h"
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
    // A Desktop whose path holds a UUID, which the log file must mask.
    static constexpr const char* uuid = "12345678-ABCD-1234-ABCD-1234567890AB";
    void customise(CollectorEnvironment& environment) override {
        desktopFolder = home.path() / (std::string("Desktop-") + uuid);
        fs::create_directories(desktopFolder);
        environment.homeFolder = home.path();
    }
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
        return found == entries.end() ? "" : found->second;
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
    // Which entries the ZIP holds, the command line's end-to-end run shows.
    EXPECT_FALSE(entry("Korvane-report.txt").empty());
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
    const auto logFile = entry("KorvaneGenerator-log.txt");
    EXPECT_TRUE(logFile.ends_with("] Korvane.kext step completed.\n"))
        << "the log file is written before the ZIP lines";
    EXPECT_THAT(logFile, HasSubstr("Target Desktop: ~/Desktop-XX-MASKED-UUID"));
    EXPECT_THAT(logFile, Not(HasSubstr(uuid))) << "the log file is masked, the log stays plain";
    EXPECT_THAT(logFile, Not(HasSubstr(home.path().string()))) << "the account name stays out";

    const auto guide = entry("INSTALL.txt");
    EXPECT_THAT(guide, HasSubstr("Target model: Mac ("));
    EXPECT_THAT(guide, HasSubstr("XHC1 (8086:a36d): 2 ports of the 15 macOS uses on this controller"));
    EXPECT_THAT(guide, HasSubstr("HS01, port 1: USB2 (code 0) (source: inferred)\n"
                                 "      last device seen: Keyboard (in it when the ports were read)"));
    EXPECT_THAT(guide, HasSubstr("SS01, port 17: Internal (code 255) (source: user)"))
        << "the user's pick, told as theirs";

    // Which ports the package holds, and with whose connector, the command
    // line's generate cases compare whole.
    model->openDesktopZip();
    EXPECT_THAT(recordingDesktop.revealed, ElementsAre(zip()));
    EXPECT_EQ(model->openZipResult(), CollectorModel::installGuideHint);
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

// Which model wins is the resolver's, and a choice reaching the package the
// command line's; here, that a run asks the machine itself when nobody has,
// and only once.
TEST_F(TargetModelRunTest, ARunAsksTheMachineForItsModelOnce) {
    loadPorts();
    machineSays = " MacBookPro15,2\n";
    generate();
    EXPECT_THAT(entry("Korvane.kext/Contents/Info.plist"), HasSubstr("<key>MacBookPro15,2-XHC1</key>"));
    model->lookUpMachineModel();
    scheduler.runUntilIdle();
    EXPECT_EQ(lookups, 1);
}

// A run that finds nothing to map fails with the scan's reason, writes no
// ZIP and leaves the one of an earlier run as it was.
TEST_F(GenerationRunTest, WithoutAPortListTheRunResetsFirstAndAnEmptyScanFailsWithItsReason) {
    const std::pair<std::vector<std::string>, std::string> rows[] = {
        {{}, "The scan of this machine's IOKit registry found no USB xHCI controller."},
        {{"Firmware connector types need root.", "No USB controller in x.txt: it looks like ioreg -p IOUSB."},
         "No USB controller in x.txt: it looks like ioreg -p IOUSB."},
    };
    writeFileAtomically(zip(), "old");
    for (const auto& [notices, reason] : rows) {
        scans = {USBScanResult{{}, notices}};
        recordingDesktop.sounds.clear();
        generate();
        EXPECT_THAT(logLines(),
                    Contains("No USB port list was loaded. Running Reset Ports before generation..."));
        const std::string line = "ERROR: No USB controller found: nothing to map. " + reason;
        EXPECT_EQ(logLines().back(), line);
        EXPECT_EQ(model->lastRunError(), line);
        EXPECT_THAT(recordingDesktop.sounds, ElementsAre("Basso"));
        EXPECT_FALSE(model->lastZipURL());
        EXPECT_EQ(readFileBytes(zip()), "old");
        EXPECT_FALSE(fs::exists(work())) << "a failed run leaves no work folder";
    }
}

// Anything but a regular file where the ZIP goes is the user's: the run
// stops before it makes anything, and removes nothing.
TEST_F(GenerationRunTest, AFolderOrLinkNamedLikeTheZipIsRefusedAndKept) {
    loadPorts();
    const std::pair<std::function<void()>, std::string> rows[] = {
        {[&] {
             fs::create_directories(zip() / "photos");
             writeFileAtomically(zip() / "photos" / "cat.jpg", "cat");
         },
         "a folder"},
        {[&] { fs::create_symlink(home.path() / "elsewhere.zip", zip()); }, "not a regular file"},
    };
    for (const auto& [make, what] : rows) {
        fs::remove_all(zip());
        make();
        generate();
        EXPECT_EQ(logLines().back(), "ERROR: " + zip().string() + " is " + what +
                                         ", not a ZIP of an earlier run, and is left as it is. Move it away "
                                         "from the Desktop or rename it, then generate again.");
        EXPECT_TRUE(fs::exists(fs::symlink_status(zip())));
        EXPECT_FALSE(fs::exists(work()));
    }
    EXPECT_FALSE(fs::exists(home.path() / "elsewhere.zip")) << "nothing written through the link";
}

// A tool that can't start is named, before the ZIP step (a ditto that fails
// there is below). The run leaves nothing of its own.
class MissingToolRunTest : public GenerationRunTest {
  protected:
    void customise(CollectorEnvironment& environment) override {
        GenerationRunTest::customise(environment);
        environment.tools.plutil = missing();
    }
    std::string missing() const { return (home.path() / "missing" / "plutil").string(); }
};

TEST_F(MissingToolRunTest, NamesTheToolAndKeepsTheOldZip) {
    loadPorts();
    writeFileAtomically(zip(), "old");
    generate();
    EXPECT_EQ(logLines().back(), "ERROR: cannot start " + missing() + ": No such file or directory");
    EXPECT_FALSE(fs::exists(work()));
    EXPECT_EQ(readFileBytes(zip()), "old");
    EXPECT_EQ(std::distance(fs::directory_iterator(desktopFolder), {}), 1) << "nothing else beside it";
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

TEST_F(GenerationRunTest, OnlyAnEmptyOrMarkedWorkFolderIsRemovedAnythingElseIsTheUsers) {
    const std::pair<std::function<void()>, bool> rows[] = {
        {[&] { fs::create_directories(work()); }, true},
        {[&] { fs::create_directories(work() / "mine"); }, false},
        {[&] { writeFileAtomically(work(), "mine"); }, false},
        {[&] { fs::create_directory_symlink(home.path(), work()); }, false},
    };
    loadPorts();
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
        GenerationRunTest::customise(environment);
        environment.workFolderLocks = std::make_shared<BusyWorkFolderLocks>();
    }
};

TEST_F(LockedRunTest, ARunWaitsForAnotherOnTheSameWorkFolderAndSaysSo) {
    loadPorts();
    generate();
    EXPECT_THAT(logLines(), Contains("Another KorvaneGenerator run is using " + work().string() +
                                     "; waiting for it to end..."));
    EXPECT_THAT(recordingDesktop.sounds, ElementsAre("Glass"));
}

// A ditto that fails as the row says: the tool's words, or its time-out,
// end the run with the old ZIP kept and nothing of the run's left.
class BrokenDittoRunTest
    : public GenerationRunTest,
      public testing::WithParamInterface<std::tuple<const char*, const char*, const char*>> {
  protected:
    void customise(CollectorEnvironment& environment) override {
        GenerationRunTest::customise(environment);
        environment.tools.ditto =
            writeFakeTool(home.path(), "ditto", "touch \"$6\"\n" + std::string(std::get<0>(GetParam())));
        environment.dittoTimeout = 0.5;
    }
};

TEST_P(BrokenDittoRunTest, EndsTheRunKeepingTheWorkFolder) {
    loadPorts();
    writeFileAtomically(zip(), "old");
    generate();
    const auto [script, failure, output] = GetParam();
    // The tool's output, with its own line feed, follows the message's first line.
    EXPECT_TRUE(
        model->logText().ends_with("] ERROR: " + std::string(failure) + (home.path() / "ditto").string() +
                                   " -c -k --sequesterRsrc --keepParent " + work().string() + " " +
                                   (desktopFolder / ".Korvane.zip.partial").string() + "\n" + output + "\n"))
        << model->logText();
    EXPECT_FALSE(fs::exists(work()));
    EXPECT_FALSE(fs::exists(desktopFolder / ".Korvane.zip.partial"));
    EXPECT_EQ(readFileBytes(zip()), "old") << "only a complete ZIP replaces it";
    EXPECT_THAT(recordingDesktop.sounds, ElementsAre("Basso"));
    EXPECT_FALSE(model->isRunning());
}

INSTANTIATE_TEST_SUITE_P(Ditto, BrokenDittoRunTest,
                         testing::Values(std::tuple{"echo 'disk full' >&2\nexit 1",
                                                    "Command failed: ", "disk full\n"},
                                         std::tuple{"exec sleep 30", "Timeout after 0s: ", ""}),
                         [](const auto& row) { return row.index == 0 ? "Fails" : "Hangs"; });

} // namespace
} // namespace korvane
