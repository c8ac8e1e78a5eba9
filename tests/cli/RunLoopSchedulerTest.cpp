#include "cli/RunLoopScheduler.h"

#include "support/SchedulerContract.h"

namespace korvane {
namespace {

struct RunLoopDriver {
    RunLoopScheduler scheduler;
    // Turns the loop until `isDone` holds, five seconds at most.
    void runUntil(const std::function<bool()>& isDone) {
        const auto bound = scheduler.postToMainAfter(Scheduler::Seconds(5), [this] { scheduler.quit(); });
        scheduler.runUntil(isDone);
        bound->cancel();
        EXPECT_TRUE(isDone()) << "still waiting after five seconds";
    }
};

INSTANTIATE_TYPED_TEST_SUITE_P(RunLoop, SchedulerContract, RunLoopDriver);

TEST(RunLoopSchedulerTest, QuitFromAnotherThreadEndsAnEndlessRun) {
    RunLoopScheduler scheduler;
    std::thread stopper([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        scheduler.quit();
    });
    scheduler.runUntil([] { return false; });
    stopper.join();
}

} // namespace
} // namespace korvane
