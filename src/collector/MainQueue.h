#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <mutex>
#include <optional>

namespace korvane {

// The core every Scheduler shares whatever loop drives its main thread: the
// queue of main-thread tasks, the count of background tasks still running,
// and a wait for either to change. The loop (Qt's event loop, the command
// line's run loop) decides when to run the queue.
class MainQueue {
  public:
    using Task = std::function<void()>;
    using Clock = std::chrono::steady_clock;

    // `wakeMain`, when given, is called (on the posting thread, outside the
    // lock) once for the tasks posted while no earlier wake-up is pending: a
    // loop that cannot wait on this queue asks to be woken that way.
    explicit MainQueue(std::function<void()> wakeMain = {});

    MainQueue(const MainQueue&) = delete;
    MainQueue& operator=(const MainQueue&) = delete;

    // From any thread.
    void post(Task task);

    // On the main thread: runs the tasks queued so far, in order. Tasks they
    // queue wait for the next call, so a loop that also paints and takes
    // input is never starved. Returns whether any ran.
    bool runQueued();

    bool isEmpty() const;

    // Background tasks: each start is matched by one finish, from any thread.
    void backgroundStarted();
    void backgroundFinished();
    std::size_t activeBackground() const;

    // Something for the main thread happened: a task was posted, a background
    // task finished or notify() was called. A loop reads events() before it
    // looks at its work and hands the value to waitForEvent, so nothing that
    // happens in between is missed.
    std::uint64_t events() const;
    void notify();
    // Blocks until events() differs from `seen`, or until `until` passes.
    void waitForEvent(std::uint64_t seen, std::optional<Clock::time_point> until = std::nullopt);

    // Runs posted tasks until no background task is left and the queue is
    // empty: for a loop that is ending while background work may still hop
    // to the main thread and wait there.
    void serveUntilBackgroundEnds();

  private:
    void recordEvent(std::unique_lock<std::mutex>& lock);

    const std::function<void()> wakeMain_;
    mutable std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<Task> tasks_;
    std::size_t activeBackground_ = 0;
    std::uint64_t events_ = 0;
    bool isWakePending_ = false;
};

} // namespace korvane
