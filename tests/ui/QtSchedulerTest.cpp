#include "ui/QtScheduler.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QThread>
#include <atomic>
#include <gtest/gtest.h>

namespace korvane {
namespace {

class QtSchedulerTest : public testing::Test {
  protected:
    void SetUp() override {
        if (!qApp) {
            GTEST_SKIP() << "no Qt platform: run under ctest, which sets QT_QPA_PLATFORM=offscreen";
        }
    }

    // Runs the event loop until `done` holds; false after five seconds.
    static bool spinUntil(const std::function<bool()>& done) {
        QElapsedTimer clock;
        clock.start();
        while (!done()) {
            if (clock.elapsed() > 5000) {
                return false;
            }
            QApplication::processEvents(QEventLoop::AllEvents, 10);
        }
        return true;
    }
};

TEST_F(QtSchedulerTest, MainTasksRunInOrderOnTheEventLoop) {
    QtScheduler scheduler;
    std::vector<int> order;
    for (int i = 0; i < 5; ++i) {
        scheduler.postToMain([&order, i] { order.push_back(i); });
    }
    EXPECT_TRUE(order.empty()) << "posting never runs a task at once";
    ASSERT_TRUE(spinUntil([&] { return order.size() == 5; }));
    EXPECT_EQ(order, (std::vector<int>{0, 1, 2, 3, 4}));
}

TEST_F(QtSchedulerTest, BackgroundHopsToTheMainThreadAndWaits) {
    QtScheduler scheduler;
    std::atomic<bool> ranOnMain = false;
    std::atomic<bool> finished = false;
    QThread* mainThread = QThread::currentThread();
    scheduler.runInBackground(Scheduler::Priority::userInitiated, [&] {
        EXPECT_NE(QThread::currentThread(), mainThread);
        scheduler.runOnMainAndWait([&] { ranOnMain = QThread::currentThread() == mainThread; });
        finished = ranOnMain.load(); // seen only after the hop returned
    });
    ASSERT_TRUE(spinUntil([&] { return finished.load(); }));
    EXPECT_TRUE(ranOnMain);
}

TEST_F(QtSchedulerTest, DelayedWorkRunsUnlessCancelled) {
    QtScheduler scheduler;
    bool kept = false;
    bool cancelled = false;
    scheduler.postToMainAfter(Scheduler::Seconds(0.02), [&] { kept = true; });
    scheduler.postToMainAfter(Scheduler::Seconds(0.01), [&] { cancelled = true; })->cancel();
    ASSERT_TRUE(spinUntil([&] { return kept; }));
    QApplication::processEvents();
    EXPECT_FALSE(cancelled);
}

TEST_F(QtSchedulerTest, EndingServesBackgroundWorkStillHoppingToMain) {
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
