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
    {
        std::lock_guard lock(mutex_);
        main_.push_back(std::move(task));
    }
    wake_.notify_all();
}

std::shared_ptr<CancellableWork> RunLoopScheduler::postToMainAfter(Seconds delay, Task task) {
    auto work = std::make_shared<CancellableWork>();
    {
        std::lock_guard lock(mutex_);
        timers_.push_back({Clock::now() + std::chrono::duration_cast<Clock::duration>(delay), nextOrder_++,
                           work, std::move(task)});
    }
    wake_.notify_all();
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
    {
        std::lock_guard lock(mutex_);
        ++activeBackground_;
    }
    auto finished = std::make_shared<std::atomic<bool>>(false);
    workers_.push_back({std::thread([this, task = std::move(task), finished] {
                            task();
                            {
                                std::lock_guard lock(mutex_);
                                --activeBackground_;
                            }
                            *finished = true;
                            wake_.notify_all();
                        }),
                        finished});
}

void RunLoopScheduler::runUntil(const std::function<bool()>& isDone) {
    std::unique_lock lock(mutex_);
    quit_ = false;
    for (;;) {
        auto firstDue = std::min_element(timers_.begin(), timers_.end(), [](const Timer& a, const Timer& b) {
            return a.due != b.due ? a.due < b.due : a.order < b.order;
        });
        if (firstDue != timers_.end() && firstDue->due <= Clock::now()) {
            Timer timer = std::move(*firstDue);
            timers_.erase(firstDue);
            lock.unlock();
            if (!timer.work->isCancelled()) {
                timer.task();
            }
            lock.lock();
            continue;
        }
        if (!main_.empty()) {
            Task task = std::move(main_.front());
            main_.pop_front();
            lock.unlock();
            task();
            lock.lock();
            continue;
        }
        if (quit_ && activeBackground_ == 0) {
            return;
        }
        if (activeBackground_ == 0) {
            lock.unlock();
            const bool done = isDone();
            lock.lock();
            if (done && activeBackground_ == 0 && main_.empty()) {
                return;
            }
            if (!main_.empty() || activeBackground_ > 0) {
                continue;
            }
        }
        if (firstDue != timers_.end()) {
            wake_.wait_until(lock, firstDue->due);
        } else {
            wake_.wait(lock);
        }
    }
}

void RunLoopScheduler::quit() {
    {
        std::lock_guard lock(mutex_);
        quit_ = true;
    }
    wake_.notify_all();
}

} // namespace korvane
