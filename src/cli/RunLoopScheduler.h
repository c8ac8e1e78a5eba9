#pragma once

#include "collector/MainQueue.h"
#include "collector/Scheduler.h"

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

namespace korvane {

// The command line's main loop: the thread that made the scheduler is the
// main thread. Background tasks each get a thread of their own.
class RunLoopScheduler final : public Scheduler {
  public:
    RunLoopScheduler();
    ~RunLoopScheduler() override;

    void postToMain(Task task) override;
    std::shared_ptr<CancellableWork> postToMainAfter(Seconds delay, Task task) override;
    void runOnMainAndWait(Task task) override;
    void runInBackground(Priority priority, Task task) override;

    // Runs main-thread tasks and due timers until `isDone` holds with no
    // background task left and nothing queued for the main thread, or until
    // quit(). Background tasks hop to the main thread, so returning earlier
    // could strand one.
    void runUntil(const std::function<bool()>& isDone);
    // Ends runUntil() soon; callable from any thread (and a signal watcher).
    void quit();

  private:
    using Clock = MainQueue::Clock;
    struct Timer {
        Clock::time_point due;
        std::uint64_t order;
        std::shared_ptr<CancellableWork> work;
        Task task;
    };
    struct Worker {
        std::thread thread;
        std::shared_ptr<std::atomic<bool>> finished;
    };

    bool isMainThread() const { return std::this_thread::get_id() == mainThread_; }
    void joinFinishedWorkers();
    // Runs the first timer that is due; false when none is.
    bool runDueTimer();
    std::optional<Clock::time_point> nextDue();

    const std::thread::id mainThread_;
    MainQueue queue_;
    std::mutex timersMutex_;
    std::vector<Timer> timers_;
    std::uint64_t nextOrder_ = 0;
    std::atomic<bool> quit_ = false;
    std::vector<Worker> workers_;
};

} // namespace korvane
