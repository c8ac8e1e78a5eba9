#pragma once

#include "collector/CompanionIndex.h"
#include "collector/DesktopServices.h"
#include "collector/Scheduler.h"
#include "collector/TargetModelResolver.h"
#include "collector/USBDeviceHotplugMonitor.h"
#include "collector/WorkFolderLocks.h"
#include "ids/IDsDownload.h"
#include "ids/IDsNameResolver.h"
#include "mapfile/USBMapFile.h"
#include "package/InstallGuide.h"
#include "package/ScanSource.h"
#include "records/USBControllerMap.h"
#include "tools/ToolPaths.h"

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace korvane {

// Everything the model reaches outside itself, handed in by the front that
// makes it (the window, the command line, a test).
struct CollectorEnvironment {
    Scheduler& scheduler;
    DesktopServices& desktop;
    // A scan of the live registry (or of a saved one standing in for it):
    // the fronts pass a USBTreeScanner's scan. Called on background threads.
    std::function<USBScanResult()> scanRegistry;
    // The resolver the scans name things with; reloaded after an ids update.
    IDsNameResolver& names;
    ToolPaths tools;
    std::function<std::filesystem::path()> desktopURL;
    std::function<std::chrono::system_clock::time_point()> now = std::chrono::system_clock::now;
    std::unique_ptr<HotplugSource> hotplugSource{};
    // None leaves runs of other processes unseen; the fronts always give one.
    std::shared_ptr<WorkFolderLocks> workFolderLocks{};
    // This machine's model when it names a Mac's (the platform's lookup), no
    // value otherwise or when absent. Called on a background thread.
    std::function<std::optional<std::string>()> machineModel{};
    // What that answer is: this machine's model, or (a saved registry
    // shown) the registry's own.
    TargetMacModel::Source machineModelSource = TargetMacModel::Source::thisMachine;
    double dittoTimeout = 60;
    // What scanRegistry reads, for the report and the install guide to say.
    ScanSource scanSource{};
    // The user's home folder, which the ZIP's log writes as "~"; none leaves
    // paths as they are.
    std::optional<std::filesystem::path> homeFolder{};
    IDsDownloadSources idsSources{};
    IDsDatabaseLocations idsLocations{};
};

// What opening, saving or importing a map gave: one line for the user and,
// where something didn't match, one line per thing that didn't.
struct MapOutcome {
    bool succeeded = false;
    std::string summary;
    std::vector<std::string> details;
};

// The one object behind the window: the log, the port editor's state, the
// generation run, hotplug tracking and the ids update.
//
// Threads: every public operation is called on the main thread, and every
// observable property is read and written there only. Background work holds
// the model weakly: a task that finds it gone does nothing. Observers are
// told on the main thread after properties change.
class CollectorModel : public std::enable_shared_from_this<CollectorModel> {
  public:
    static constexpr const char* zipName = "Korvane.zip";
    static constexpr const char* workFolderName = "KorvaneGenerator_Work";
    static constexpr const char* logFileName = "KorvaneGenerator-log.txt";
    // Inside a work folder a run made, so that the next run knows it may
    // remove it; a folder without it is the user's and is never touched.
    static constexpr const char* workFolderMarkName = ".korvane-work-folder";
    static constexpr std::int64_t portLimit = 15;
    static constexpr Scheduler::Seconds hotplugDebounce{0.18};
    // What a successful run and Open ZIP point the user to.
    static constexpr const char* installGuideHint =
        "Open Korvane.zip and read INSTALL.txt: how to install the map and what it holds.";

    static std::shared_ptr<CollectorModel> create(CollectorEnvironment environment);

    CollectorModel(const CollectorModel&) = delete;
    CollectorModel& operator=(const CollectorModel&) = delete;

    // Observable properties.
    const std::string& logText() const { return logText_; }
    bool isRunning() const { return isRunning_; }
    const std::optional<std::filesystem::path>& lastZipURL() const { return lastZipURL_; }
    const std::vector<USBControllerMap>& scannedControllers() const { return scannedControllers_; }
    // The user's decisions and what was seen, by port key: what a map file
    // saves and "unsaved changes" compares.
    const MappingSession& session() const { return session_; }
    // A port's entry of the session (blank when it has none).
    const SessionPort& portSession(const USBControllerMap& controller, const USBPortMap& port) const;
    std::set<std::string> selectedPortIDs() const { return session_.selectedKeys(); }
    std::map<std::string, std::int64_t> connectorOverrides() const;
    bool isScanningUSB() const { return isScanningUSB_; }
    bool isUpdatingIDs() const { return isUpdatingIDs_; }
    bool showPortLimitWarning() const { return showPortLimitWarning_; }
    // The user's names for sockets, and the last device seen in each port
    // (also after it left), by port key.
    std::map<std::string, std::string> portNicknames() const;
    std::map<std::string, PortSighting> portSightings() const;
    // The map file this session was last opened from or saved to.
    const std::optional<std::filesystem::path>& mapFileURL() const { return mapFileURL_; }
    // Whether closing now would lose work: anything that differs from the
    // map file, or (with none) from what a Reset Ports would bring back.
    bool hasUnsavedChanges() const;
    // What the last scan could not learn and how to get it (firmware
    // connector types on Linux without root or acpica-tools), one sentence each.
    const std::vector<std::string>& scanNotices() const { return scanNotices_; }
    // The user's target Mac model; empty when not chosen.
    const std::string& targetModelChoice() const;
    // What this machine said once asked (lookUpMachineModel or a run); no
    // value before, or when it names no Mac.
    const std::optional<std::string>& machineModel() const { return targetModels_.machineModel(); }
    bool isMachineModelKnown() const { return targetModels_.isMachineModelKnown(); }
    // Ports whose connector pick goes to their companion too (both halves' keys).
    const std::set<std::string>& sameTypeForCompanionPortIDs() const { return sameTypeForCompanionPortIDs_; }

    // The outcomes of what the user pressed that the log alone would hide; the
    // window shows them beside the badge and the log panel.
    // The "ERROR: ..." line of the last run, from its failure until the next run starts.
    const std::optional<std::string>& lastRunError() const { return lastRunError_; }
    // The ids update's result line, from its end until the next update starts.
    const std::optional<std::string>& lastIDsUpdateResult() const { return lastIDsUpdateResult_; }
    // Whether a download of that update failed.
    bool hasFailedIDsUpdate() const { return hasFailedIDsUpdate_; }
    // Why Open ZIP could show nothing, until the next run or Open ZIP.
    const std::optional<std::string>& openZipProblem() const { return openZipProblem_; }
    // What Open ZIP showed and what to read in it, when it could show it;
    // until the next run or Open ZIP.
    const std::optional<std::string>& openZipResult() const { return openZipResult_; }
    // What the last open, save or import of a map gave, refusals included.
    const std::optional<MapOutcome>& lastMapOutcome() const { return lastMapOutcome_; }

    // Calls `observer` after each change of the properties above; the token
    // ends the subscription.
    std::size_t observe(std::function<void()> observer);
    void stopObserving(std::size_t token);

    // Start-up and the run.
    void prepareInitialChecks();
    void startCollection();
    void openDesktopZip();
    // The donate page is the build's to give (the window's); none opens nothing.
    void openPayPalDonate(const std::string& address);

    // The target Mac model. The choice is trimmed; empty means not chosen.
    // One that macModelProblem() refuses changes nothing and gives false.
    bool setTargetModelChoice(const std::string& model);
    TargetMacModel targetMacModel() const;
    // "Target Mac model: iMacPro1,1 (from the registry)", as a run logs it.
    std::string targetModelLine() const;
    // Says both models when the choice differs from the registry's or this
    // machine's own; empty otherwise.
    std::string targetModelDifferenceNote() const;
    // Asks this machine for its model once, in the background.
    void lookUpMachineModel();
    // What the fronts say of the merge personalities a run would write now:
    // renamed to keep two like-named controllers, or one replacing another.
    std::vector<std::string> mergePersonalityNotes() const;

    // Port editing.
    void scanUSBPorts();
    void refreshActiveUSBDevices();
    void selectAllPorts();
    void deselectAllPorts();
    void setPortSelected(const USBControllerMap& controller, const USBPortMap& port, bool selected);
    bool isPortSelected(const USBControllerMap& controller, const USBPortMap& port) const;
    // The connector a row shows and a run uses: the user's pick, else the scan's.
    std::int64_t connectorFor(const USBControllerMap& controller, const USBPortMap& port) const;
    // Where that connector came from: the scan's source, or the user when
    // their pick differs from the scanned code.
    ConnectorSource connectorSourceFor(const USBControllerMap& controller, const USBPortMap& port) const;
    void setConnector(const USBControllerMap& controller, const USBPortMap& port, std::int64_t code);
    std::int64_t totalPortCount() const;
    // The checked ports of this scan; the session's checks of ports not on
    // this machine (a map's, another system's) are kept and counted apart.
    std::int64_t presentSelectedPortCount() const;
    std::int64_t keptAbsentPortCount() const;
    void dismissPortLimitWarning();

    // Changes a port's entry of the session as one change.
    void editPort(const USBControllerMap& controller, const USBPortMap& port,
                  const std::function<void(SessionPort&)>& change);

    // Sockets' names and what was seen in them. The name is trimmed; one the
    // rule of portTextProblem() refuses changes nothing and gives false.
    bool setNickname(const USBControllerMap& controller, const USBPortMap& port, const std::string& nickname);
    std::string nicknameFor(const USBControllerMap& controller, const USBPortMap& port) const;
    // "seen: SanDisk Ultra, 14:03", or "" for a port nothing was seen in.
    std::string seenTextFor(const USBControllerMap& controller, const USBPortMap& port) const;
    // What a port's row and table line show of its device: the device, else
    // the last one seen there, else "No active device".
    std::string deviceTextFor(const USBControllerMap& controller, const USBPortMap& port) const;

    // Map files. Each reads or writes the file at once and, when it succeeds,
    // changes the session as one change; a refusal changes nothing but
    // lastMapOutcome (not the log).
    MapOutcome openMap(const std::filesystem::path& file);
    MapOutcome saveMap(const std::filesystem::path& file);
    // Checks the ports an existing package maps and takes its connectors
    // and model, starting the selection afresh from it.
    MapOutcome importPackage(const std::filesystem::path& package);
    // The session as a map file would hold it.
    USBMapFile currentMap() const;
    // Companion ports: the other half of a port's connector, by its companionKey.
    std::optional<ScannedPort> companionOf(const USBPortMap& port) const;
    // "SS01" for a companion on the same controller, "XHC1 HS05" for one on
    // another; empty without a companion in the scan. companionText() puts
    // "with " before it, as the port lists show it.
    std::string companionName(const USBControllerMap& controller, const USBPortMap& port) const;
    std::string companionText(const USBControllerMap& controller, const USBPortMap& port) const;
    // "SS03 is kept without its USB 2 half HS10: USB 2 devices in that socket
    // will not work", one per checked port whose companion isn't checked.
    std::vector<std::string> portsKeptWithoutCompanion() const;
    // Gives the code to the port and to its companion, as two picks would.
    void setConnectorWithCompanion(const USBControllerMap& controller, const USBPortMap& port,
                                   std::int64_t code);
    // While on, a pick on either half goes to both; turning it on gives the
    // companion this port's connector at once. Reset Ports turns it off.
    void setSameTypeForCompanion(const USBControllerMap& controller, const USBPortMap& port, bool isOn);
    bool isSameTypeForCompanion(const USBControllerMap& controller, const USBPortMap& port) const;

    // Hotplug.
    void startUSBHotplugMonitoring();

    // Ids databases.
    void updateIDsDatabases();

    // The controllers a run hands to the package writer: the selected ports
    // only, with the user's connectors. Public for the command line's dry runs.
    std::vector<USBControllerMap> selectedControllers() const;

  private:
    explicit CollectorModel(CollectorEnvironment environment);
    // Keeps the outcome as lastMapOutcome, tells the observers, returns it.
    MapOutcome tell(MapOutcome outcome);

    void append(const std::string& message);
    void changed();
    std::filesystem::path desktopURL() const;

    void runCollection();
    // The install guide of a run that writes `selected`; on the main thread.
    InstallGuide installGuide(const std::vector<USBControllerMap>& selected) const;
    std::unique_ptr<WorkFolderLock> lockWorkFolder(const std::filesystem::path& workFolder);
    void writeCollectorLog(const std::filesystem::path& file);

    // A reset checks only the ports with a device and forgets every pick; a
    // silent refresh adds what it sees to the user's work.
    void startGuardedScan(bool isReset, bool silent);
    void runUSBScanForEditing(bool isReset, bool silent);
    std::int64_t selectedPortCount(const USBControllerMap& controller) const;
    std::map<std::string, std::int64_t> previousCounts() const;
    void warnIfAnyControllerReachedPortLimit(const std::map<std::string, std::int64_t>& previousCounts);

    // Checks in `session` the companion of every port in `activeDevices`;
    // one line per pair so checked, for the log.
    std::vector<std::string>
    checkCompanionsOfActivePorts(const std::map<std::string, std::string>& activeDevices,
                                 MappingSession& session) const;

    std::string fileModelNote(std::string_view kind, const std::optional<std::string>& fileModel) const;
    std::string resolveTargetModel();
    void storeMachineModel(std::optional<std::string> model);

    void scheduleUSBHotplugRefresh();
    void performIDsDatabaseUpdate();

    // Runs `work` on the main thread and waits; for background steps.
    void onMain(const std::function<void()>& work);

    CollectorEnvironment environment_;

    std::string logText_;
    bool isRunning_ = false;
    std::optional<std::filesystem::path> lastZipURL_;
    std::vector<USBControllerMap> scannedControllers_;
    MappingSession session_;
    bool isScanningUSB_ = false;
    bool isUpdatingIDs_ = false;
    bool showPortLimitWarning_ = false;
    std::optional<std::filesystem::path> mapFileURL_;
    // What the session held when last opened or saved (or reset, with no
    // file): hasUnsavedChanges() compares against it.
    MappingSession savedSession_;
    std::vector<std::string> scanNotices_;
    TargetModelResolver targetModels_;
    std::set<std::string> sameTypeForCompanionPortIDs_;
    // Points into scannedControllers_: made again whenever that is replaced.
    CompanionIndex companions_;
    std::optional<std::string> lastRunError_;
    std::optional<std::string> lastIDsUpdateResult_;
    bool hasFailedIDsUpdate_ = false;
    std::optional<std::string> openZipProblem_;
    std::optional<std::string> openZipResult_;
    std::optional<MapOutcome> lastMapOutcome_;

    USBDeviceHotplugMonitor usbMonitor_;
    std::shared_ptr<CancellableWork> hotplugRefreshWorkItem_;

    std::map<std::size_t, std::function<void()>> observers_;
    std::size_t nextObserver_ = 0;
};

// Whether the 15-port limit of the target system applies to the controller:
// Intel, and "XHC" or "XHCI" as a whole word of its name, match name or
// location.
bool shouldWarnAboutSystemPortLimit(const USBControllerMap& controller);

// How many ports macOS uses on the controller, where a limit applies; the
// one place the install guide and the budget checks take it from.
std::optional<std::int64_t> portBudgetFor(const USBControllerMap& controller);

} // namespace korvane
