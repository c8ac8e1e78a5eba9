#include "cli/RunLoopScheduler.h"

#include "support/SchedulerContract.h"

namespace korvane {
namespace {

struct RunLoopDriver {
    RunLoopScheduler scheduler;
    void runUntil(const std::function<bool()>& isDone) { scheduler.runUntil(isDone); }
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
