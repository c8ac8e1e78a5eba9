#pragma once

#include "collector/Scheduler.h"

#include <atomic>
#include <chrono>
#include <gtest/gtest.h>
#include <thread>
#include <vector>

namespace korvane {

// What every scheduler that runs real threads must do, whatever loop drives
// its main thread. A `Driver` owns a `scheduler` and turns its loop with
// `runUntil(isDone)` on the test's thread, the main thread.
template <typename Driver> class SchedulerContract : public testing::Test {
  protected:
    Driver driver;
};

TYPED_TEST_SUITE_P(SchedulerContract);

TYPED_TEST_P(SchedulerContract, MainTasksRunLaterAndInOrder) {
    std::vector<int> order;
    for (int i = 0; i < 5; ++i) {
        this->driver.scheduler.postToMain([&order, i] { order.push_back(i); });
    }
    EXPECT_TRUE(order.empty()) << "posting never runs a task at once";
    this->driver.runUntil([&] { return order.size() == 5; });
    EXPECT_EQ(order, (std::vector<int>{0, 1, 2, 3, 4}));
}

TYPED_TEST_P(SchedulerContract, BackgroundWorkHopsToTheMainThreadAndWaitsForEachHop) {
    auto& scheduler = this->driver.scheduler;
    const auto mainThread = std::this_thread::get_id();
    std::vector<std::string> steps;
    std::atomic<bool> finished = false;
    scheduler.runInBackground(Scheduler::Priority::userInitiated, [&] {
        EXPECT_NE(std::this_thread::get_id(), mainThread);
        scheduler.runOnMainAndWait([&] {
            EXPECT_EQ(std::this_thread::get_id(), mainThread);
            steps.push_back("first hop");
        });
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        scheduler.runOnMainAndWait([&] { steps.push_back("second hop"); });
        finished = true;
    });
    this->driver.runUntil([&] { return finished.load(); });
    EXPECT_EQ(steps, (std::vector<std::string>{"first hop", "second hop"}));
}

TYPED_TEST_P(SchedulerContract, CancelledTimersDoNotRunAndOthersRunInTimeOrder) {
    auto& scheduler = this->driver.scheduler;
    std::vector<int> fired;
    scheduler.postToMainAfter(Scheduler::Seconds(0.03), [&] { fired.push_back(3); });
    scheduler.postToMainAfter(Scheduler::Seconds(0.01), [&] { fired.push_back(1); })->cancel();
    scheduler.postToMainAfter(Scheduler::Seconds(0.02), [&] { fired.push_back(2); });
    this->driver.runUntil([&] { return fired.size() >= 2; });
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    EXPECT_EQ(fired, (std::vector<int>{2, 3}));
}

REGISTER_TYPED_TEST_SUITE_P(SchedulerContract, MainTasksRunLaterAndInOrder,
                            BackgroundWorkHopsToTheMainThreadAndWaitsForEachHop,
                            CancelledTimersDoNotRunAndOthersRunInTimeOrder);

} // namespace korvane
