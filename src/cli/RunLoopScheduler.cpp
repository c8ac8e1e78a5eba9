#include "cli/RunLoopScheduler.h"

#include <algorithm>

namespace korvane {

RunLoopScheduler::RunLoopScheduler() : mainThread_(std::this_thread::get_id()) {}

RunLoopScheduler::~RunLoopScheduler() {
    for (auto& worker : workers_) {
        worker.thread.join();
    }
}

void RunLoopScheduler::postToMain(Task task) {
    queue_.post(std::move(task));
}

std::shared_ptr<CancellableWork> RunLoopScheduler::postToMainAfter(Seconds delay, Task task) {
    auto work = std::make_shared<CancellableWork>();
    {
        std::lock_guard lock(timersMutex_);
        timers_.push_back({Clock::now() + std::chrono::duration_cast<Clock::duration>(delay), nextOrder_++,
                           work, std::move(task)});
    }
    // A timer due before the loop's current wait ends must cut it short.
    queue_.notify();
    return work;
}

void RunLoopScheduler::runOnMainAndWait(Task task) {
    runNowOrPostAndWait(task, isMainThread());
}

void RunLoopScheduler::joinFinishedWorkers() {
    auto finished =
        std::partition(workers_.begin(), workers_.end(), [](const Worker& w) { return !*w.finished; });
    for (auto it = finished; it != workers_.end(); ++it) {
        it->thread.join();
    }
    workers_.erase(finished, workers_.end());
}

void RunLoopScheduler::runInBackground(Priority, Task task) {
    // Only the main thread starts background work, so workers_ needs no lock.
    joinFinishedWorkers();
    queue_.backgroundStarted();
    auto finished = std::make_shared<std::atomic<bool>>(false);
    workers_.push_back({std::thread([this, task = std::move(task), finished] {
                            task();
                            *finished = true;
                            queue_.backgroundFinished();
                        }),
                        finished});
}

bool RunLoopScheduler::runDueTimer() {
    std::unique_lock lock(timersMutex_);
    auto firstDue = std::min_element(timers_.begin(), timers_.end(), [](const Timer& a, const Timer& b) {
        return a.due != b.due ? a.due < b.due : a.order < b.order;
    });
    if (firstDue == timers_.end() || firstDue->due > Clock::now()) {
        return false;
    }
    Timer timer = std::move(*firstDue);
    timers_.erase(firstDue);
    lock.unlock();
    if (!timer.work->isCancelled()) {
        timer.task();
    }
    return true;
}

std::optional<RunLoopScheduler::Clock::time_point> RunLoopScheduler::nextDue() {
    std::lock_guard lock(timersMutex_);
    if (timers_.empty()) {
        return std::nullopt;
    }
    return std::min_element(timers_.begin(), timers_.end(),
                            [](const Timer& a, const Timer& b) { return a.due < b.due; })
        ->due;
}

void RunLoopScheduler::runUntil(const std::function<bool()>& isDone) {
    quit_ = false;
    for (;;) {
        const std::uint64_t seen = queue_.events();
        if (runDueTimer() || queue_.runQueued()) {
            continue;
        }
        if (queue_.activeBackground() == 0 && (quit_ || isDone()) && queue_.isEmpty() &&
            queue_.activeBackground() == 0) {
            return;
        }
        queue_.waitForEvent(seen, nextDue());
    }
}

void RunLoopScheduler::quit() {
    quit_ = true;
    queue_.notify();
}

} // namespace korvane
