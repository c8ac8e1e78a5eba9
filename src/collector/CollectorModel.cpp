#include "collector/CollectorModel.h"

#include "package/KextPackageWriter.h"
#include "package/MergePersonalityNames.h"
#include "package/OutputSanitizer.h"
#include "package/SensitiveTextRedaction.h"
#include "records/CollectorError.h"
#include "records/FileIO.h"
#include "records/MacModel.h"
#include "tools/ProcessRunner.h"

#include <ctime>
#include <exception>

namespace korvane {

namespace fs = std::filesystem;

namespace {

// Any web address with the donate path and its one query key will do; this
// is the project's own.
constexpr const char* donateAddress = "https://www.paypal.com/donate/?hosted_button_id=KORVANEGENERATOR";

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
    // Held until the failure ending has marked the folder again, so no other
    // run finds it unmarked.
    std::unique_ptr<WorkFolderLock> lock;
    fs::path createdWorkFolder;
    try {
        onMain([this] {
            append(std::string(40, '-'));
            append("Starting Korvane.kext generation.");
        });
        const fs::path desktop = desktopURL();
        const fs::path workFolder = desktop / workFolderName;
        const fs::path zipURL = desktop / zipName;

        lock = lockWorkFolder(workFolder);
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
        onMain([&] { selected = selectedControllers(); });
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
        generateKorvaneKext(workFolder, std::nullopt, selected, environment_.tools, model);
        onMain([this] { append("Korvane.kext step completed."); });

        sanitizeDirectory(workFolder, environment_.tools.plutil);
        writeCollectorLog(workFolder / logFileName);

        if (fs::exists(fs::symlink_status(zipURL))) {
            fs::remove_all(zipURL);
        }
        onMain([this] { append("Creating ZIP on Desktop..."); });
        // The ZIP holds the run's files only; a failure from here on marks
        // the folder again.
        fs::remove(workFolder / workFolderMarkName);
        runProcess(environment_.tools.ditto,
                   {"-c", "-k", "--sequesterRsrc", "--keepParent", workFolder.string(), zipURL.string()},
                   desktop, environment_.dittoTimeout);
        onMain([&] { append("ZIP created successfully: " + zipURL.string()); });

        std::error_code ignored;
        fs::remove_all(workFolder, ignored);
        lock.reset(); // before the run is seen to end, so a new one never waits on it
        onMain([&] {
            append("Temporary Desktop folder removed after ZIP creation.");
            lastZipURL_ = zipURL;
            isRunning_ = false;
            changed();
            environment_.desktop.playSound("Glass");
        });
    } catch (...) {
        const std::string line = "ERROR: " + errorDescription(std::current_exception());
        if (!createdWorkFolder.empty()) {
            try {
                markWorkFolder(createdWorkFolder);
            } catch (...) {
                // Unmarked, the next run asks the user to move the folder
                // away rather than remove it.
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

void CollectorModel::writeCollectorLog(const fs::path& file) {
    std::string text;
    onMain([&] { text = logText_; });
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
    if (!isThere) {
        openZipProblem_ = "Open ZIP found nothing: " + lastZipURL_->string() + " was moved or deleted.";
    } else if (!isShown) {
        openZipProblem_ = "Open ZIP: no file manager could show " + lastZipURL_->string() + ".";
    } else {
        openZipProblem_.reset();
    }
    changed();
}

void CollectorModel::openPayPalDonate() {
    environment_.desktop.openURL(donateAddress);
}

} // namespace korvane
