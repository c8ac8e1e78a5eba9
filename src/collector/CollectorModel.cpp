#include "collector/CollectorModel.h"

#include "base/FileIO.h"
#include "base/Text.h"
#include "package/InstallGuide.h"
#include "package/KextPackageWriter.h"
#include "package/MergePersonalityNames.h"
#include "package/OutputSanitizer.h"
#include "package/SensitiveTextRedaction.h"
#include "records/CollectorError.h"
#include "records/MacModel.h"
#include "tools/ProcessRunner.h"

#include <ctime>
#include <exception>

namespace korvane {

namespace fs = std::filesystem;

namespace {

// A run removes a work folder it finds only when a run of ours left it: one
// carrying the mark, or an empty one. Anything else there is the user's.
void removeLeftoverWorkFolder(const fs::path& workFolder) {
    const auto status = fs::symlink_status(workFolder);
    if (!fs::exists(status)) {
        return;
    }
    if (fs::is_directory(status) &&
        (fs::is_empty(workFolder) ||
         fs::is_regular_file(fs::symlink_status(workFolder / CollectorModel::workFolderMarkName)))) {
        fs::remove_all(workFolder);
        return;
    }
    throw CollectorError::operationFailed(workFolder.string() +
                                          " was not made by KorvaneGenerator and is left as it is. Move it "
                                          "away from the Desktop or rename it, then generate again.");
}

// The ZIP of an earlier run is replaced; anything else of that name (a
// folder, a link, a device) is the user's and stops the run untouched.
void refuseAnythingButAFileAt(const fs::path& zipURL) {
    const auto status = fs::symlink_status(zipURL);
    if (!fs::exists(status) || fs::is_regular_file(status)) {
        return;
    }
    const std::string what = fs::is_directory(status) ? "a folder" : "not a regular file";
    throw CollectorError::operationFailed(zipURL.string() + " is " + what +
                                          ", not a ZIP of an earlier run, and is left as it is. Move it away "
                                          "from the Desktop or rename it, then generate again.");
}

// Where ditto writes the ZIP until it is complete: beside it, so that the
// rename onto Korvane.zip stays on one file system; never a name in use.
fs::path partialZipPath(const fs::path& zipURL) {
    for (int attempt = 0;; ++attempt) {
        fs::path candidate = zipURL.parent_path() / ("." + zipURL.filename().string() + ".partial" +
                                                     (attempt == 0 ? "" : "-" + std::to_string(attempt)));
        if (!fs::exists(fs::symlink_status(candidate))) {
            return candidate;
        }
    }
}

// Why a run found nothing to map: the scan's own account where it gave one
// (a saved registry says what it looked like), else what was read.
std::string noControllerReason(const std::vector<std::string>& notices, const ScanSource& source) {
    std::vector<std::string> reasons;
    for (const auto& notice : notices) {
        if (notice.starts_with("No USB controller")) {
            reasons.push_back(notice);
        }
    }
    if (reasons.empty()) {
        return "The scan of " + scanSourceText(source) + " found no USB xHCI controller.";
    }
    return joined(reasons, " ");
}

std::string targetModelOrigin(TargetMacModel::Source source) {
    switch (source) {
    case TargetMacModel::Source::userChoice:
        return "your choice: the Target Mac model field, --model, or a map or package you opened";
    case TargetMacModel::Source::savedRegistry:
        return "the model the saved registry names for its machine";
    case TargetMacModel::Source::thisMachine:
        return "the model of the machine KorvaneGenerator ran on";
    case TargetMacModel::Source::fallback:
        break;
    }
    return "no model was chosen and the machine the ports were read from named none";
}

void markWorkFolder(const fs::path& workFolder) {
    writeFileAtomically(workFolder / CollectorModel::workFolderMarkName,
                        "KorvaneGenerator's work folder: its next run removes it.\n");
}

std::string clockText(std::chrono::system_clock::time_point when) {
    const std::time_t seconds = std::chrono::system_clock::to_time_t(when);
    std::tm local{};
    localtime_r(&seconds, &local);
    char text[16];
    std::strftime(text, sizeof text, "%H:%M:%S", &local);
    return text;
}

} // namespace

std::shared_ptr<CollectorModel> CollectorModel::create(CollectorEnvironment environment) {
    return std::shared_ptr<CollectorModel>(new CollectorModel(std::move(environment)));
}

CollectorModel::CollectorModel(CollectorEnvironment environment)
    : environment_(std::move(environment)), targetModels_(environment_.machineModelSource),
      usbMonitor_(std::move(environment_.hotplugSource)) {}

std::size_t CollectorModel::observe(std::function<void()> observer) {
    observers_[nextObserver_] = std::move(observer);
    return nextObserver_++;
}

void CollectorModel::stopObserving(std::size_t token) {
    observers_.erase(token);
}

void CollectorModel::changed() {
    // A copy: an observer may subscribe or leave while being told.
    const auto observers = observers_;
    for (const auto& [token, observer] : observers) {
        observer();
    }
}

void CollectorModel::onMain(const std::function<void()>& work) {
    environment_.scheduler.runOnMainAndWait(work);
}

void CollectorModel::append(const std::string& message) {
    logText_ += "[" + clockText(environment_.now()) + "] " + message + "\n";
    changed();
}

fs::path CollectorModel::desktopURL() const {
    return environment_.desktopURL();
}

void CollectorModel::prepareInitialChecks() {
    append("App started.");
    append("Target Desktop: " + desktopURL().string());
    append("Mode: standalone Korvane.kext generation only.");
    append("No ACPI, audio, video, power or system dumps are collected by this app.");
}

void CollectorModel::startCollection() {
    if (isRunning_) {
        return;
    }
    isRunning_ = true;
    lastZipURL_.reset();
    lastRunError_.reset();
    openZipProblem_.reset();
    openZipResult_.reset();
    changed();
    std::weak_ptr<CollectorModel> weak = weak_from_this();
    environment_.scheduler.runInBackground(Scheduler::Priority::userInitiated, [weak] {
        if (auto model = weak.lock()) {
            model->runCollection();
        }
    });
}

std::unique_ptr<WorkFolderLock> CollectorModel::lockWorkFolder(const fs::path& workFolder) {
    if (!environment_.workFolderLocks) {
        return nullptr;
    }
    if (auto lock = environment_.workFolderLocks->tryLock(workFolder)) {
        return lock;
    }
    onMain([&] {
        append("Another KorvaneGenerator run is using " + workFolder.string() + "; waiting for it to end...");
    });
    return environment_.workFolderLocks->lock(workFolder);
}

void CollectorModel::runCollection() {
    // Held until the failure ending has removed the folder, so no other run
    // finds it half gone.
    std::unique_ptr<WorkFolderLock> lock;
    fs::path createdWorkFolder;
    fs::path partialZip;
    try {
        onMain([this] {
            append(std::string(40, '-'));
            append("Starting Korvane.kext generation.");
        });
        const fs::path desktop = desktopURL();
        const fs::path workFolder = desktop / workFolderName;
        const fs::path zipURL = desktop / zipName;

        lock = lockWorkFolder(workFolder);
        refuseAnythingButAFileAt(zipURL);
        removeLeftoverWorkFolder(workFolder);
        fs::create_directories(workFolder);
        createdWorkFolder = workFolder;
        markWorkFolder(workFolder);
        onMain([&] { append("Temporary folder created: " + workFolder.string()); });

        std::size_t controllerCount = 0;
        onMain([&] { controllerCount = scannedControllers_.size(); });
        if (controllerCount == 0) {
            onMain(
                [this] { append("No USB port list was loaded. Running Reset Ports before generation..."); });
            runUSBScanForEditing(true, false);
        }

        std::vector<USBControllerMap> selected;
        std::vector<std::string> notices;
        onMain([&] {
            selected = selectedControllers();
            notices = scanNotices_;
        });
        if (selected.empty()) {
            // A ZIP without a map would pass for one; an earlier ZIP stays.
            throw CollectorError::operationFailed("No USB controller found: nothing to map. " +
                                                  noControllerReason(notices, environment_.scanSource));
        }
        std::size_t portCount = 0;
        for (const auto& controller : selected) {
            portCount += controller.ports.size();
        }
        onMain([&] {
            append("Generating Korvane.kext with " + std::to_string(portCount) + " enabled port(s)...");
            // Once per run, whatever checked them, before anything is packed.
            std::string halves;
            for (const auto& line : portsKeptWithoutCompanion()) {
                halves += (halves.empty() ? "" : "; ") + line;
            }
            if (!halves.empty()) {
                append(halves + ".");
            }
        });

        const std::string model = resolveTargetModel();
        generateKorvaneKext(workFolder, std::nullopt, selected, environment_.tools, model, {},
                            environment_.scanSource);
        InstallGuide guide;
        onMain([&] { guide = installGuide(selected); });
        writeFileAtomically(workFolder / installGuideFileName, installGuideText(guide));
        onMain([this] { append("Korvane.kext step completed."); });

        sanitizeDirectory(workFolder, environment_.tools.plutil);
        writeCollectorLog(workFolder / logFileName);

        onMain([this] { append("Creating ZIP on Desktop..."); });
        // The ZIP holds the run's files only.
        fs::remove(workFolder / workFolderMarkName);
        partialZip = partialZipPath(zipURL);
        runTool(environment_.tools.ditto,
                {"-c", "-k", "--sequesterRsrc", "--keepParent", workFolder.string(), partialZip.string()},
                desktop, environment_.dittoTimeout);
        // Only a complete ZIP replaces the one of an earlier run.
        fs::rename(partialZip, zipURL);
        partialZip.clear();
        onMain([&] { append("ZIP created successfully: " + zipURL.string()); });

        std::error_code ignored;
        fs::remove_all(workFolder, ignored);
        lock.reset(); // before the run is seen to end, so a new one never waits on it
        onMain([&] {
            append("Temporary Desktop folder removed after ZIP creation.");
            append(installGuideHint);
            lastZipURL_ = zipURL;
            isRunning_ = false;
            changed();
            environment_.desktop.playSound("Glass");
        });
    } catch (...) {
        const std::string line = "ERROR: " + errorDescription(std::current_exception());
        // What this run made goes; what stood there before it stays.
        std::error_code ignored;
        if (!partialZip.empty()) {
            fs::remove(partialZip, ignored);
        }
        if (!createdWorkFolder.empty()) {
            fs::remove_all(createdWorkFolder, ignored);
            if (fs::exists(fs::symlink_status(createdWorkFolder, ignored))) {
                try {
                    markWorkFolder(createdWorkFolder);
                } catch (...) {
                    // Unmarked, the next run asks the user to move the folder
                    // away rather than remove it.
                }
            }
        }
        lock.reset();
        onMain([&] {
            append(line);
            lastRunError_ = line;
            isRunning_ = false;
            changed();
            environment_.desktop.playSound("Basso");
        });
    }
}

InstallGuide CollectorModel::installGuide(const std::vector<USBControllerMap>& selected) const {
    const TargetMacModel target = targetMacModel();
    InstallGuide guide{.targetModel = target.value,
                       .targetModelOrigin = targetModelOrigin(target.source),
                       .isTargetModelAMac = target.source != TargetMacModel::Source::fallback,
                       .source = environment_.scanSource};
    // The scanned ports by key: a kept port carries the user's connector
    // already, and only the scanned one tells whether that is the scan's.
    std::map<std::string, ScannedPort> scanned;
    for (const auto& controller : scannedControllers_) {
        for (const auto& port : controller.ports) {
            scanned.emplace(usbPortStableID(controller, port), ScannedPort{&controller, &port});
        }
    }
    for (const auto& controller : selected) {
        InstallGuideController entry{.controller = controller, .portBudget = portBudgetFor(controller)};
        for (auto& port : entry.controller.ports) {
            if (const auto it = scanned.find(usbPortStableID(controller, port)); it != scanned.end()) {
                port.connectorSource = connectorSourceFor(*it->second.controller, *it->second.port);
            }
            InstallGuidePort about{.nickname = nicknameFor(controller, port),
                                   .companion = companionName(controller, port)};
            if (const auto companion = companionOf(port)) {
                about.isCompanionKept = isPortSelected(*companion->controller, *companion->port);
            }
            if (!port.activeDevice.empty()) {
                about.lastDevice = port.activeDevice + " (in it when the ports were read)";
            } else if (auto seen = seenTextFor(controller, port); !seen.empty()) {
                constexpr std::string_view prefix = "seen: ";
                about.lastDevice = seen.starts_with(prefix) ? seen.substr(prefix.size()) : seen;
            }
            entry.ports.push_back(std::move(about));
        }
        guide.controllers.push_back(std::move(entry));
    }
    return guide;
}

void CollectorModel::writeCollectorLog(const fs::path& file) {
    std::string text;
    onMain([&] { text = logText_; });
    if (environment_.homeFolder) {
        text = maskHomeFolder(text, *environment_.homeFolder);
    }
    writeFileAtomically(file, redactSensitiveText(text));
}

std::vector<USBControllerMap> CollectorModel::selectedControllers() const {
    std::vector<USBControllerMap> selected;
    selected.reserve(scannedControllers_.size());
    for (const auto& controller : scannedControllers_) {
        USBControllerMap copy = controller;
        copy.ports.clear();
        for (const auto& port : controller.ports) {
            const SessionPort& entry = portSession(controller, port);
            if (!entry.selected) {
                continue;
            }
            USBPortMap kept = port;
            kept.connector = entry.connector.value_or(port.connector);
            copy.ports.push_back(std::move(kept));
        }
        selected.push_back(std::move(copy));
    }
    return selected;
}

bool CollectorModel::setTargetModelChoice(const std::string& model) {
    auto choice = targetModelChoiceOf(model);
    if (choice && !macModelProblem(*choice).empty()) {
        return false;
    }
    if (choice != session_.targetModel) {
        session_.targetModel = std::move(choice);
        changed();
    }
    return true;
}

std::string CollectorModel::targetModelDifferenceNote() const {
    return targetModels_.differenceNote(session_.targetModel);
}

std::string CollectorModel::targetModelLine() const {
    const TargetMacModel target = targetMacModel();
    return "Target Mac model: " + target.value + " (" + std::string(targetModelSourceText(target.source)) +
           ")";
}

const std::string& CollectorModel::targetModelChoice() const {
    static const std::string none;
    return session_.targetModel ? *session_.targetModel : none;
}

TargetMacModel CollectorModel::targetMacModel() const {
    return targetModels_.resolve(session_.targetModel);
}

void CollectorModel::storeMachineModel(std::optional<std::string> model) {
    if (targetModels_.store(std::move(model))) {
        changed();
    }
}

void CollectorModel::lookUpMachineModel() {
    if (!targetModels_.shouldStartLookUp()) {
        return;
    }
    if (!environment_.machineModel) {
        storeMachineModel(std::nullopt);
        return;
    }
    std::weak_ptr<CollectorModel> weak = weak_from_this();
    environment_.scheduler.runInBackground(
        Scheduler::Priority::utility, [weak, lookUp = environment_.machineModel] {
            auto model = lookUp();
            if (auto strong = weak.lock()) {
                strong->onMain([&] { strong->storeMachineModel(std::move(model)); });
            }
        });
}

// On the run's thread: asks the machine itself when nobody has yet, so a run
// never waits on the main thread for a tool.
std::string CollectorModel::resolveTargetModel() {
    bool shouldAsk = false;
    onMain([&] { shouldAsk = targetModels_.needsMachineModel(session_.targetModel); });
    if (shouldAsk) {
        auto model = environment_.machineModel ? environment_.machineModel() : std::nullopt;
        onMain([&] { storeMachineModel(std::move(model)); });
    }
    std::string value;
    onMain([&] {
        value = targetMacModel().value;
        append(targetModelLine());
        if (const std::string note = targetModelDifferenceNote(); !note.empty()) {
            append(note);
        }
    });
    return value;
}

std::vector<std::string> CollectorModel::mergePersonalityNotes() const {
    // The window asks after every click; only a shared name can give a note.
    std::set<std::string> names;
    for (const auto& controller : scannedControllers_) {
        if (!names.insert(controller.name).second) {
            return korvane::mergePersonalityNotes(selectedControllers(), targetMacModel().value);
        }
    }
    return {};
}

void CollectorModel::openDesktopZip() {
    if (!lastZipURL_) {
        return;
    }
    // The file manager is asked whatever the check finds; the check only
    // tells the user why it may show nothing.
    std::error_code error;
    const bool isThere = fs::exists(*lastZipURL_, error);
    const bool isShown = environment_.desktop.revealInFileManager(*lastZipURL_);
    openZipResult_.reset();
    if (!isThere) {
        openZipProblem_ = "Open ZIP found nothing: " + lastZipURL_->string() + " was moved or deleted.";
    } else if (!isShown) {
        openZipProblem_ = "Open ZIP: no file manager could show " + lastZipURL_->string() + ".";
    } else {
        openZipProblem_.reset();
        openZipResult_ = std::string(installGuideHint);
    }
    changed();
}

void CollectorModel::openPayPalDonate(const std::string& address) {
    if (!address.empty()) {
        environment_.desktop.openURL(address);
    }
}

} // namespace korvane
