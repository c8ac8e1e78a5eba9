#pragma once

#include "collector/Scheduler.h"

#include <atomic>
#include <functional>
#include <memory>
#include <thread>

namespace korvane {

// A thread of its own for a platform's device notifications, so that they are
// heard whatever the front does with its main thread (the command line never
// runs a platform event loop). Each event the loop reports with `notify()`
// becomes one `onChange` on the main thread, posted through the scheduler.
//
// The loop runs until the thread is destroyed: the destructor sets
// `isStopRequested()`, then calls `wake` from the destroying thread, which must
// bring the loop round to look at it soon, and joins. A task still queued when
// this object is gone calls a live copy of `onChange`, never into it.
class NotificationThread {
  public:
    using Loop = std::function<void(NotificationThread&)>;

    NotificationThread(Scheduler& scheduler, std::function<void()> onChange);
    ~NotificationThread();

    NotificationThread(const NotificationThread&) = delete;
    NotificationThread& operator=(const NotificationThread&) = delete;

    // Starts `loop` on the thread; once only.
    void start(Loop loop, std::function<void()> wake);

    // From any thread: one change for the main thread.
    void notify();

    bool isStopRequested() const { return stopRequested_.load(); }
    bool isRunning() const { return thread_.joinable(); }

  private:
    Scheduler& scheduler_;
    std::shared_ptr<const std::function<void()>> onChange_;
    std::function<void()> wake_;
    std::atomic<bool> stopRequested_{false};
    std::thread thread_;
};

} // namespace korvane
