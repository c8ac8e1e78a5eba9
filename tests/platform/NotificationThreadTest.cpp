#include "platform/NotificationThread.h"

#include <condition_variable>
#include <deque>
#include <gtest/gtest.h>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

namespace korvane {
namespace {

// Main-thread tasks posted from any thread, run when the test says so.
class ThreadSafeMainQueue final : public Scheduler {
  public:
    void postToMain(Task task) override {
        std::lock_guard lock(mutex_);
        tasks_.push_back(std::move(task));
        posted_.notify_all();
    }
    std::shared_ptr<CancellableWork> postToMainAfter(Seconds, Task task) override {
        postToMain(std::move(task));
        return std::make_shared<CancellableWork>();
    }
    void runOnMainAndWait(Task task) override { task(); }
    void runInBackground(Priority, Task task) override { std::thread(std::move(task)).detach(); }

    void waitForTasks(std::size_t count) {
        std::unique_lock lock(mutex_);
        posted_.wait(lock, [&] { return tasks_.size() >= count; });
    }
    void runPosted() {
        std::unique_lock lock(mutex_);
        auto tasks = std::exchange(tasks_, {});
        lock.unlock();
        for (auto& task : tasks) {
            task();
        }
    }

  private:
    std::mutex mutex_;
    std::condition_variable posted_;
    std::deque<Task> tasks_;
};

// A platform loop in miniature: reports `events` changes, then blocks until
// woken, as a run loop or a poll() would.
struct BlockingLoop {
    explicit BlockingLoop(int count = 0) : events(count) {}

    int events;
    std::mutex mutex;
    std::condition_variable woken;
    bool isWoken = false;

    NotificationThread::Loop loop() {
        return [this](NotificationThread& thread) {
            for (int i = 0; i < events; ++i) {
                thread.notify();
            }
            std::unique_lock lock(mutex);
            woken.wait(lock, [&] { return isWoken; });
            EXPECT_TRUE(thread.isStopRequested()) << "woken only to stop";
        };
    }
    std::function<void()> wake() {
        return [this] {
            std::lock_guard lock(mutex);
            isWoken = true;
            woken.notify_all();
        };
    }
};

// Destroying the thread wakes and joins the loop (it hangs if the wake were
// lost); changes queued while it lived run afterwards from a copy of the
// callback, on the main thread, and never from the loop's thread.
TEST(NotificationThread, EachEventIsOneChangeOnTheMainThreadEvenAfterTheThreadIsGone) {
    ThreadSafeMainQueue scheduler;
    std::vector<std::thread::id> calls;
    BlockingLoop platform(3);
    {
        NotificationThread thread(scheduler, [&calls] { calls.push_back(std::this_thread::get_id()); });
        thread.start(platform.loop(), platform.wake());
        ASSERT_TRUE(thread.isRunning());
        scheduler.waitForTasks(3);
    }
    EXPECT_TRUE(platform.isWoken);
    EXPECT_TRUE(calls.empty()) << "the loop's thread never calls onChange itself";
    scheduler.runPosted();
    EXPECT_EQ(calls, std::vector<std::thread::id>(3, std::this_thread::get_id()));
}

TEST(NotificationThread, AStopRightAfterTheStartIsNotLost) {
    ThreadSafeMainQueue scheduler;
    for (int round = 0; round < 50; ++round) {
        BlockingLoop platform;
        NotificationThread thread(scheduler, [] {});
        thread.start(platform.loop(), platform.wake());
    }
    scheduler.runPosted();
}

} // namespace
} // namespace korvane
