#pragma once

#include "collector/Scheduler.h"

#include <deque>
#include <vector>

namespace korvane {

// A scheduler for tests: everything runs on the calling thread when the test
// says so, against a virtual clock, so timing-dependent sequences (debounces,
// a scan overlapping a run) are exact and need no sleeps.
//
// Background tasks queue until runUntilIdle() or advance(); while one
// runs, runOnMainAndWait() runs its task inline, as if the hop were instant.
class ManualScheduler final : public Scheduler {
  public:
    void postToMain(Task task) override { main_.push_back(std::move(task)); }
    std::shared_ptr<CancellableWork> postToMainAfter(Seconds delay, Task task) override;
    void runOnMainAndWait(Task task) override { task(); }
    void runInBackground(Priority priority, Task task) override;

    // Runs the queued main-thread tasks, then the background ones, oldest
    // first, and again until neither queue holds anything. Timers don't fire.
    void runUntilIdle();
    // Moves the clock, firing due timers in time order, then runs until idle.
    void advance(Seconds seconds);

    std::size_t pendingBackgroundTasks() const { return background_.size(); }
    std::vector<Priority> backgroundPriorities() const;

  private:
    struct Timer {
        Seconds due;
        std::uint64_t order;
        std::shared_ptr<CancellableWork> work;
        Task task;
    };
    struct Background {
        Priority priority;
        Task task;
    };

    Seconds now_{0};
    std::uint64_t nextOrder_ = 0;
    std::deque<Task> main_;
    std::deque<Background> background_;
    std::vector<Timer> timers_;
};

} // namespace korvane
