#pragma once

#include "collector/MainQueue.h"
#include "collector/Scheduler.h"

#include <QObject>
#include <vector>

class QThread;

namespace korvane {

// The model's scheduler on Qt's event loop: the thread that makes it is the
// main thread, and main-thread tasks run from that thread's event loop.
//
// Main-thread tasks wait in the shared MainQueue rather than as queued Qt
// calls, so the destructor can keep serving background tasks that hop to the
// main thread (a scan or run still going when the window closes) until they
// end: it returns only after every background task has finished. Timers die
// with the scheduler and never fire after it.
class QtScheduler final : public Scheduler {
  public:
    QtScheduler();
    ~QtScheduler() override;

    QtScheduler(const QtScheduler&) = delete;
    QtScheduler& operator=(const QtScheduler&) = delete;

    void postToMain(Task task) override;
    std::shared_ptr<CancellableWork> postToMainAfter(Seconds delay, Task task) override;
    void runOnMainAndWait(Task task) override;
    void runInBackground(Priority priority, Task task) override;

  private:
    bool isMainThread() const;
    void reapFinishedThreads();

    QObject context_; // lives on the main thread; owns the timers and the wake-ups
    MainQueue queue_;
    std::vector<QThread*> threads_; // touched on the main thread only
};

} // namespace korvane
