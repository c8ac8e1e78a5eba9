#pragma once

#include <chrono>
#include <exception>
#include <functional>
#include <future>
#include <memory>

namespace korvane {

// A delayed main-thread task that can still be called off. Cancelling one that
// has already run changes nothing.
class CancellableWork {
  public:
    void cancel() { cancelled_ = true; }
    bool isCancelled() const { return cancelled_; }

  private:
    bool cancelled_ = false; // touched on the main thread only
};

// Where the model's work runs. The main thread owns all observable state;
// background tasks do the scanning, tool runs and downloads and hop back to
// the main thread for every state access.
//
// Contract for implementations:
// - postToMain and postToMainAfter may be called from any thread; the task runs
//   later on the main thread, tasks posted without delay in posting order.
// - runOnMainAndWait blocks a background task until the task has run on the
//   main thread. Called on the main thread it runs the task at once.
// - runInBackground starts the task on some other thread (or, in a test
//   scheduler, later on the test's own thread) and returns at once.
// - Tasks may post further tasks. Nothing is run after the scheduler is gone.
class Scheduler {
  public:
    using Task = std::function<void()>;
    using Seconds = std::chrono::duration<double>;
    enum class Priority { userInitiated, utility };

    virtual ~Scheduler() = default;

    virtual void postToMain(Task task) = 0;
    virtual std::shared_ptr<CancellableWork> postToMainAfter(Seconds delay, Task task) = 0;
    virtual void runOnMainAndWait(Task task) = 0;
    virtual void runInBackground(Priority priority, Task task) = 0;

  protected:
    // runOnMainAndWait for a scheduler that knows its main thread: runs the
    // task at once there; elsewhere posts it and blocks until it has run,
    // passing on what it throws.
    void runNowOrPostAndWait(const Task& task, bool isOnMainThread) {
        if (isOnMainThread) {
            task();
            return;
        }
        std::promise<void> done;
        auto finished = done.get_future();
        postToMain([&task, &done] {
            try {
                task();
                done.set_value();
            } catch (...) {
                done.set_exception(std::current_exception());
            }
        });
        finished.get();
    }
};

} // namespace korvane
