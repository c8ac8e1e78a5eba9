#include "cli/RunLoopScheduler.h"

#include <atomic>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace korvane {
namespace {

using namespace std::chrono_literals;

TEST(RunLoopSchedulerTest, WaitsForBackgroundWorkThatHopsToTheMainThread) {
    RunLoopScheduler scheduler;
    const auto mainThread = std::this_thread::get_id();
    std::vector<std::string> steps;
    bool done = false;
    scheduler.runInBackground(Scheduler::Priority::userInitiated, [&] {
        EXPECT_NE(std::this_thread::get_id(), mainThread);
        scheduler.runOnMainAndWait([&] {
            EXPECT_EQ(std::this_thread::get_id(), mainThread);
            steps.push_back("first hop");
            done = true; // true early: the loop must still wait for the task's end
        });
        std::this_thread::sleep_for(50ms);
        scheduler.runOnMainAndWait([&] { steps.push_back("second hop"); });
    });
    scheduler.runUntil([&] { return done; });
    EXPECT_THAT(steps, testing::ElementsAre("first hop", "second hop"));
}

TEST(RunLoopSchedulerTest, CancelledTimersDoNotRunAndOthersRunInTimeOrder) {
    RunLoopScheduler scheduler;
    std::vector<int> fired;
    scheduler.postToMainAfter(Scheduler::Seconds(0.03), [&] { fired.push_back(3); });
    auto cancelled = scheduler.postToMainAfter(Scheduler::Seconds(0.01), [&] { fired.push_back(1); });
    scheduler.postToMainAfter(Scheduler::Seconds(0.02), [&] { fired.push_back(2); });
    cancelled->cancel();
    scheduler.runUntil([&] { return fired.size() == 2; });
    EXPECT_THAT(fired, testing::ElementsAre(2, 3));
}

TEST(RunLoopSchedulerTest, QuitFromAnotherThreadEndsAnEndlessRun) {
    RunLoopScheduler scheduler;
    std::thread stopper([&] {
        std::this_thread::sleep_for(20ms);
        scheduler.quit();
    });
    scheduler.runUntil([] { return false; });
    stopper.join();
    SUCCEED();
}

TEST(RunLoopSchedulerTest, ManyShortBackgroundTasksAllFinish) {
    RunLoopScheduler scheduler;
    std::atomic<int> count = 0;
    int started = 0;
    std::function<void()> startOne = [&] {
        scheduler.runInBackground(Scheduler::Priority::utility, [&] {
            ++count;
            scheduler.postToMain([&] {
                if (++started < 200) {
                    startOne();
                }
            });
        });
    };
    startOne();
    scheduler.runUntil([&] { return started >= 200; });
    EXPECT_EQ(count, 200);
}

} // namespace
} // namespace korvane
