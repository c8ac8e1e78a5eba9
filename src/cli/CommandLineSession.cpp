#include "cli/CommandLineSession.h"

#include "dumpscan/USBTreeScanner.h"
#include "platform/LiveSources.h"
#include "platform/PlatformFolders.h"
#include "savedregistry/SavedRegistry.h"

namespace korvane {

namespace {

// Nobody is at a desktop to hear a sound or see a file manager; the command
// prints the ZIP's path instead.
class QuietDesktop final : public DesktopServices {
public:
    void playSound(const std::string&) override {}
    void revealInFileManager(const std::filesystem::path&) override {}
    void openURL(const std::string&) override {}
};

} // namespace

CommandLineSession::CommandLineSession(const RegistryChoice& choice, std::FILE* logOutput, bool listenForHotplug)
    : desktop_(std::make_unique<QuietDesktop>()) {
    const auto& registryFile = choice.registryFile;
    if (choice.ioregFile) {
        if (!std::filesystem::is_regular_file(*choice.ioregFile)) {
            throw UsageError{choice.ioregFile->string() + ": no such file"};
        }
        // The dump is all there is: the live scan finds nothing, so the
        // scanner falls back on the dump, as it would on a machine without
        // controllers.
        registry_ = std::make_unique<EmptyRegistrySource>();
    } else if (registryFile) {
        if (!std::filesystem::is_regular_file(*registryFile)) {
            throw UsageError{registryFile->string() + ": no such file"};
        }
        registry_ = openSavedRegistry(*registryFile);
        if (!registry_) {
            throw UsageError{registryFile->string() +
                             ": not a saved registry (an ioreg -a snapshot or an ioreg -l text dump)"};
        }
    } else {
        registry_ = makeLiveRegistrySource();
    }

    IDsNameResolver& names = IDsNameResolver::shared();
    CollectorEnvironment environment{
        .scheduler = scheduler_,
        .desktop = *desktop_,
        .scanRegistry = [this, &names, ioregFile = choice.ioregFile] {
            return USBTreeScanner{ioregFile, *registry_, names}.scan();
        },
        .names = names,
        .tools = ToolPaths::forPlatform(),
        .desktopURL = [] { return desktopURL(); },
    };
    if (listenForHotplug && !registryFile && !choice.ioregFile) {
        environment.hotplugSource = makeHotplugSource(scheduler_);
    }
    environment.idsSources = IDsDownloadSources::standard();
    environment.idsLocations = names.locations();
    model_ = CollectorModel::create(std::move(environment));

    if (logOutput) {
        logObserver_ = model_->observe([this, logOutput] {
            const auto& log = model_->logText();
            if (log.size() > printedLog_) {
                std::fwrite(log.data() + printedLog_, 1, log.size() - printedLog_, logOutput);
                std::fflush(logOutput);
                printedLog_ = log.size();
            }
        });
    }
}

CommandLineSession::~CommandLineSession() {
    model_->stopObserving(logObserver_);
}

void CommandLineSession::scanForEditing() {
    model_->scanUSBPorts();
    runUntil([this] { return !model_->isScanningUSB(); });
}

} // namespace korvane
