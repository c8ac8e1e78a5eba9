#include "collector/MainQueue.h"

namespace korvane {

MainQueue::MainQueue(std::function<void()> wakeMain) : wakeMain_(std::move(wakeMain)) {}

void MainQueue::recordEvent(std::unique_lock<std::mutex>& lock) {
    ++events_;
    lock.unlock();
    changed_.notify_all();
}

void MainQueue::post(Task task) {
    std::unique_lock lock(mutex_);
    tasks_.push_back(std::move(task));
    const bool shouldWake = wakeMain_ && !isWakePending_;
    isWakePending_ = isWakePending_ || shouldWake;
    recordEvent(lock);
    if (shouldWake) {
        wakeMain_();
    }
}

bool MainQueue::runQueued() {
    std::unique_lock lock(mutex_);
    isWakePending_ = false;
    std::size_t count = tasks_.size();
    const bool ranAny = count > 0;
    while (count-- > 0 && !tasks_.empty()) {
        Task task = std::move(tasks_.front());
        tasks_.pop_front();
        lock.unlock();
        task();
        lock.lock();
    }
    // What the tasks posted found a wake-up pending and asked for none.
    const bool shouldWake = wakeMain_ && !tasks_.empty() && !isWakePending_;
    isWakePending_ = isWakePending_ || shouldWake;
    lock.unlock();
    if (shouldWake) {
        wakeMain_();
    }
    return ranAny;
}

bool MainQueue::isEmpty() const {
    std::lock_guard lock(mutex_);
    return tasks_.empty();
}

void MainQueue::backgroundStarted() {
    std::lock_guard lock(mutex_);
    ++activeBackground_;
}

void MainQueue::backgroundFinished() {
    std::unique_lock lock(mutex_);
    --activeBackground_;
    recordEvent(lock);
}

std::size_t MainQueue::activeBackground() const {
    std::lock_guard lock(mutex_);
    return activeBackground_;
}

std::uint64_t MainQueue::events() const {
    std::lock_guard lock(mutex_);
    return events_;
}

void MainQueue::notify() {
    std::unique_lock lock(mutex_);
    recordEvent(lock);
}

void MainQueue::waitForEvent(std::uint64_t seen, std::optional<Clock::time_point> until) {
    std::unique_lock lock(mutex_);
    const auto happened = [&] { return events_ != seen; };
    if (until) {
        changed_.wait_until(lock, *until, happened);
    } else {
        changed_.wait(lock, happened);
    }
}

void MainQueue::serveUntilBackgroundEnds() {
    for (;;) {
        const std::uint64_t seen = events();
        if (runQueued()) {
            continue;
        }
        {
            std::lock_guard lock(mutex_);
            if (activeBackground_ == 0 && tasks_.empty()) {
                return;
            }
        }
        waitForEvent(seen);
    }
}

} // namespace korvane
