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
        if (adjust) {
            adjust(environment);
        }
    }
    // What a test changes in the model's world; SetUp() again makes the model anew.
    std::function<void(CollectorEnvironment&)> adjust;
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
    // Every path under the Desktop with its kind, and a file's bytes.
    std::map<std::string, std::string> desktopState() const {
        std::map<std::string, std::string> state;
        for (const auto& item : fs::recursive_directory_iterator(desktopFolder)) {
            state[item.path().string()] = item.is_symlink()     ? "link"
                                          : item.is_directory() ? "folder"
                                                                : readFileBytes(item.path()).value_or("?");
        }
        return state;
    }
    std::string entry(const std::string& name) const {
        return readZip(zip()).at("KorvaneGenerator_Work/" + name);
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
    recordingDesktop.canReveal = false;
    model->openDesktopZip();
    EXPECT_EQ(model->openZipProblem(), "Open ZIP: no file manager could show " + zip().string() + ".");
}

// Which model wins is the resolver's, and a choice reaching the package the
// command line's; here, that a run asks the machine itself when nobody has,
// and only once.
TEST_F(GenerationRunTest, ARunAsksTheMachineForItsModelOnce) {
    int lookups = 0;
    adjust = [&](CollectorEnvironment& environment) {
        environment.machineModel = [&] {
            ++lookups;
            return std::optional<std::string>(" MacBookPro15,2\n");
        };
    };
    SetUp();
    loadPorts();
    generate();
    EXPECT_THAT(entry("Korvane.kext/Contents/Info.plist"), HasSubstr("<key>MacBookPro15,2-XHC1</key>"));
    model->lookUpMachineModel();
    scheduler.runUntilIdle();
    EXPECT_EQ(lookups, 1);
}

// Every way a run can fail ends it with its reason and the Basso sound, and
// leaves the Desktop as it found it: an earlier ZIP, and anything of the
// user's named like the ZIP or the work folder, stay; nothing of the run's
// stays.
TEST_F(GenerationRunTest, AFailedRunSaysWhyAndLeavesTheDesktopAsItWas) {
    const std::string leftAsItIs =
        " and is left as it is. Move it away from the Desktop or rename it, then generate again.";
    const std::string notOurs = ", not a ZIP of an earlier run," + leftAsItIs;
    const std::string notMade = work().string() + " was not made by KorvaneGenerator" + leftAsItIs;
    const std::string ditto = (home.path() / "ditto").string() + " -c -k --sequesterRsrc --keepParent " +
                              work().string() + " " + (desktopFolder / ".Korvane.zip.partial").string() +
                              "\n";
    const auto brokenDitto = [this](const std::string& script) {
        return [this, script] {
            adjust = [this, script](CollectorEnvironment& environment) {
                environment.tools.ditto = writeFakeTool(home.path(), "ditto", "touch \"$6\"\n" + script);
                environment.dittoTimeout = 0.5;
            };
        };
    };
    const std::string missingTool = (home.path() / "missing" / "plutil").string();
    // Each row's name, what it changes in the model's world or on the Desktop
    // (where an earlier run's ZIP is), and the error.
    const std::tuple<const char*, std::function<void()>, std::string> rows[] = {
        // Without a port list the run scans first; an empty scan fails with its reason.
        {"NothingScanned", [&] { scans = {USBScanResult{}}; },
         "No USB controller found: nothing to map. The scan of this machine's IOKit registry found no USB "
         "xHCI controller."},
        {"NothingInADump",
         [&] {
             scans = {USBScanResult{{},
                                    {"Firmware connector types need root.",
                                     "No USB controller in x.txt: it looks like ioreg -p IOUSB."}}};
         },
         "No USB controller found: nothing to map. No USB controller in x.txt: it looks like ioreg -p "
         "IOUSB."},
        {"AFolderNamedLikeTheZip",
         [&] {
             fs::remove(zip());
             fs::create_directories(zip() / "photos");
             writeFileAtomically(zip() / "photos" / "cat.jpg", "cat");
         },
         zip().string() + " is a folder" + notOurs},
        {"ALinkNamedLikeTheZip",
         [&] {
             fs::remove(zip());
             fs::create_symlink(home.path() / "elsewhere.zip", zip());
         },
         zip().string() + " is not a regular file" + notOurs},
        {"AFolderOfTheUsers", [&] { fs::create_directories(work() / "mine"); }, notMade},
        {"AFileOfTheUsers", [&] { writeFileAtomically(work(), "mine"); }, notMade},
        {"ALinkOfTheUsers", [&] { fs::create_directory_symlink(home.path(), work()); }, notMade},
        {"AToolThatCannotStart",
         [&] { adjust = [&](CollectorEnvironment& environment) { environment.tools.plutil = missingTool; }; },
         "cannot start " + missingTool + ": No such file or directory"},
        // The tool's output, with its own line feed, follows the message's first line.
        {"DittoFails", brokenDitto("echo 'disk full' >&2\nexit 1"),
         "Command failed: " + ditto + "disk full\n"},
        {"DittoHangs", brokenDitto("exec sleep 30"), "Timeout after 0s: " + ditto},
    };
    for (const auto& [name, arrange, error] : rows) {
        SCOPED_TRACE(name);
        fs::remove_all(desktopFolder);
        fs::create_directories(desktopFolder);
        writeFileAtomically(zip(), "old");
        adjust = nullptr;
        arrange();
        SetUp();
        if (!std::string_view(name).starts_with("Nothing")) { // those start without a port list
            loadPorts();
        }
        const auto before = desktopState();
        generate();
        EXPECT_EQ(model->lastRunError(), "ERROR: " + error);
        EXPECT_TRUE(model->logText().ends_with("] ERROR: " + error + "\n")) << model->logText();
        EXPECT_THAT(recordingDesktop.sounds, ElementsAre("Basso"));
        recordingDesktop.sounds.clear();
        EXPECT_FALSE(model->isRunning());
        EXPECT_FALSE(model->lastZipURL());
        EXPECT_EQ(desktopState(), before);
    }
    EXPECT_FALSE(fs::exists(home.path() / "elsewhere.zip")) << "nothing written through a link";
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

// Another run holds the work folder when this one first asks; an empty one
// (another run's, ended) is taken over.
struct BusyWorkFolderLocks final : WorkFolderLocks {
    std::unique_ptr<WorkFolderLock> tryLock(const fs::path&) override { return nullptr; }
    std::unique_ptr<WorkFolderLock> lock(const fs::path&) override {
        return std::make_unique<WorkFolderLock>();
    }
};

TEST_F(GenerationRunTest, ARunWaitsForAnotherOnTheSameWorkFolderAndSaysSo) {
    adjust = [](CollectorEnvironment& environment) {
        environment.workFolderLocks = std::make_shared<BusyWorkFolderLocks>();
    };
    SetUp();
    loadPorts();
    fs::create_directories(work());
    generate();
    EXPECT_THAT(logLines(), Contains("Another KorvaneGenerator run is using " + work().string() +
                                     "; waiting for it to end..."));
    EXPECT_THAT(recordingDesktop.sounds, ElementsAre("Glass"));
}

} // namespace
} // namespace korvane
