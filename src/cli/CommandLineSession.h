#pragma once

#include "app/RegistryChoice.h"
#include "cli/RunLoopScheduler.h"
#include "collector/CollectorModel.h"

#include <memory>
#include <ostream>
#include <set>
#include <string>

namespace korvane {

// A bad argument or an unusable input file: the command ends with status 2
// and this one line.
struct UsageError {
    std::string message;
};

// The model as the command line drives it: the calling thread is the main
// thread, the registry is the one the user chose, the desktop services stay
// quiet (no sounds: nobody sits at a desktop), and the log goes to standard
// error (`err`) as it grows, leaving standard output to the results. What a
// scan could not learn (its notices) goes to `err` too, each sentence once.
class CommandLineSession {
  public:
    // Throws UsageError when the chosen registry file can't serve.
    CommandLineSession(const RegistryChoice& choice, std::ostream& err, bool listenForHotplug = false);
    ~CommandLineSession();

    CollectorModel& model() { return *model_; }
    // For what must outlive a stretch of the model's life, as a plugging session does.
    std::shared_ptr<CollectorModel> sharedModel() { return model_; }
    RunLoopScheduler& scheduler() { return scheduler_; }
    const RegistrySource& registry() const { return *registry_; }

    // Runs the main loop until `isDone` holds and all background work is over.
    void runUntil(const std::function<bool()>& isDone) { scheduler_.runUntil(isDone); }

    // The editor's reset scan, waited for; its notices (among them why a
    // saved registry gave no controller) go to standard error.
    // Asks the registry shown (or this machine) for its own model and waits.
    void learnMachineModel();
    void scanForEditing();

  private:
    std::ostream& err_;
    RunLoopScheduler scheduler_;
    std::unique_ptr<DesktopServices> desktop_;
    std::shared_ptr<const RegistrySource> registry_;
    std::shared_ptr<CollectorModel> model_;
    std::size_t logObserver_ = 0;
    std::size_t printedLog_ = 0;
    std::size_t noticeObserver_ = 0;
    std::set<std::string> toldNotices_;
};

} // namespace korvane
