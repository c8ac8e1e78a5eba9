#include "ui/QtScheduler.h"

#include "support/SchedulerContract.h"

#include <QApplication>
#include <QElapsedTimer>

namespace korvane {
namespace {

struct QtDriver {
    QtScheduler scheduler;
    // Turns the event loop until `isDone` holds, five seconds at most.
    void runUntil(const std::function<bool()>& isDone) {
        QElapsedTimer clock;
        clock.start();
        while (!isDone() && clock.elapsed() < 5000) {
            QApplication::processEvents(QEventLoop::AllEvents, 10);
        }
        EXPECT_TRUE(isDone()) << "still waiting after five seconds";
    }
};

INSTANTIATE_TYPED_TEST_SUITE_P(Qt, SchedulerContract, QtDriver);

TEST(QtSchedulerTest, EndingServesBackgroundWorkStillHoppingToMain) {
    std::atomic<int> hops = 0;
    {
        QtScheduler scheduler;
        scheduler.runInBackground(Scheduler::Priority::utility, [&] {
            for (int i = 0; i < 3; ++i) {
                scheduler.runOnMainAndWait([&] { ++hops; });
            }
        });
        // No event loop runs here: the scheduler's end must serve the hops.
    }
    EXPECT_EQ(hops, 3);
}

} // namespace
} // namespace korvane
