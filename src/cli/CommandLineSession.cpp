#include "cli/CommandLineSession.h"

#include "app/CollectorAssembly.h"

namespace korvane {

namespace {

// Nobody is at a desktop to hear a sound or see a file manager; the command
// prints the ZIP's path instead.
class QuietDesktop final : public DesktopServices {
  public:
    void playSound(const std::string&) override {}
    bool revealInFileManager(const std::filesystem::path&) override { return false; }
    void openURL(const std::string&) override {}
};

std::shared_ptr<const RegistrySource> openChosenRegistry(const RegistryChoice& choice) {
    try {
        return openRegistry(choice);
    } catch (const RegistryChoiceError& error) {
        throw UsageError{error.what()};
    }
}

} // namespace

CommandLineSession::CommandLineSession(const RegistryChoice& choice, std::ostream& err, bool listenForHotplug)
    : err_(err), desktop_(std::make_unique<QuietDesktop>()), registry_(openChosenRegistry(choice)),
      model_(assembleCollectorModel(choice, registry_, scheduler_, *desktop_, listenForHotplug)) {
    logObserver_ = model_->observe([this] {
        const auto& log = model_->logText();
        if (log.size() > printedLog_) {
            err_.write(log.data() + printedLog_, static_cast<std::streamsize>(log.size() - printedLog_));
            err_.flush();
            printedLog_ = log.size();
        }
    });
    noticeObserver_ = model_->observe([this] {
        for (const auto& notice : model_->scanNotices()) {
            if (toldNotices_.insert(notice).second) {
                err_ << notice << '\n';
            }
        }
    });
}

CommandLineSession::~CommandLineSession() {
    model_->stopObserving(logObserver_);
    model_->stopObserving(noticeObserver_);
}

void CommandLineSession::learnMachineModel() {
    model_->lookUpMachineModel();
    runUntil([this] { return model_->isMachineModelKnown(); });
}

void CommandLineSession::scanForEditing() {
    model_->scanUSBPorts();
    runUntil([this] { return !model_->isScanningUSB(); });
}

} // namespace korvane
