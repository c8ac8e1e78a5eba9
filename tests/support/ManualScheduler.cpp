#include "support/ManualScheduler.h"

#include <algorithm>

namespace korvane {

std::shared_ptr<CancellableWork> ManualScheduler::postToMainAfter(Seconds delay, Task task) {
    auto work = std::make_shared<CancellableWork>();
    timers_.push_back({now_ + delay, nextOrder_++, work, std::move(task)});
    return work;
}

void ManualScheduler::runInBackground(Priority priority, Task task) {
    background_.push_back({priority, std::move(task)});
}

void ManualScheduler::runUntilIdle() {
    while (!main_.empty() || !background_.empty()) {
        while (!main_.empty()) {
            auto task = std::move(main_.front());
            main_.pop_front();
            task();
        }
        while (!background_.empty()) {
            auto entry = std::move(background_.front());
            background_.pop_front();
            entry.task();
        }
    }
}

void ManualScheduler::advance(Seconds seconds) {
    const auto target = now_ + seconds;
    for (;;) {
        auto next = std::min_element(timers_.begin(), timers_.end(), [](const Timer& a, const Timer& b) {
            return a.due != b.due ? a.due < b.due : a.order < b.order;
        });
        if (next == timers_.end() || next->due > target) {
            break;
        }
        Timer timer = std::move(*next);
        timers_.erase(next);
        now_ = timer.due;
        if (!timer.work->isCancelled()) {
            timer.task();
        }
        runUntilIdle();
    }
    now_ = target;
    runUntilIdle();
}

std::vector<Scheduler::Priority> ManualScheduler::backgroundPriorities() const {
    std::vector<Priority> priorities;
    for (const auto& entry : background_) {
        priorities.push_back(entry.priority);
    }
    return priorities;
}

} // namespace korvane
