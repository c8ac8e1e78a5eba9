#include "platform/linux/UdevHotplugSource.h"

#include <chrono>
#include <condition_variable>
#include <deque>
#include <gtest/gtest.h>
#include <memory>
#include <mutex>
#include <string>
#include <umockdev.h>

namespace korvane {
namespace {

using namespace std::chrono_literals;

// Collects what the source posts to the main thread from its listener
// thread; the test thread plays the main thread and runs the tasks.
class PostCollector final : public Scheduler {
  public:
    void postToMain(Task task) override {
        {
            std::lock_guard lock(mutex_);
            posted_.push_back(std::move(task));
        }
        changed_.notify_all();
    }
    std::shared_ptr<CancellableWork> postToMainAfter(Seconds, Task task) override {
        postToMain(std::move(task));
        return std::make_shared<CancellableWork>();
    }
    void runOnMainAndWait(Task task) override { task(); }
    void runInBackground(Priority, Task task) override { task(); }

    // Runs the posted tasks once `count` have come or the wait is over, and
    // says how many ran.
    std::size_t runWhen(std::size_t count, std::chrono::milliseconds wait) {
        std::unique_lock lock(mutex_);
        changed_.wait_for(lock, wait, [&] { return posted_.size() >= count; });
        std::deque<Task> tasks = std::move(posted_);
        posted_.clear();
        lock.unlock();
        for (auto& task : tasks) {
            task();
        }
        return tasks.size();
    }

  private:
    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<Task> posted_;
};

struct TestbedDeleter {
    void operator()(UMockdevTestbed* testbed) const { g_object_unref(testbed); }
};
struct GFreeDeleter {
    void operator()(gchar* text) const { g_free(text); }
};
using GText = std::unique_ptr<gchar, GFreeDeleter>;

// An event that should come arrives within this; one that shouldn't is given
// the same time to show up.
constexpr auto eventWait = 2000ms;
constexpr auto quietWait = 300ms;

class UdevHotplugSourceTest : public ::testing::Test {
  protected:
    void SetUp() override {
        // The check looks at /sys through the preload, which redirects it only
        // once a test bed exists, and keeps its first answer: bed first.
        testbed_.reset(umockdev_testbed_new());
        if (!umockdev_in_mock_environment()) {
            GTEST_SKIP() << "needs umockdev's preload: run under umockdev-wrapper";
        }
    }

    GText addUSBDevice(const char* name, const char* devtype) {
        return GText(umockdev_testbed_add_device(testbed_.get(), "usb", name, nullptr, "idVendor", "1d6b",
                                                 "idProduct", "0002", nullptr, "DEVTYPE", devtype, nullptr));
    }

    std::unique_ptr<UMockdevTestbed, TestbedDeleter> testbed_;
    PostCollector scheduler_;
    int changes_ = 0;
};

TEST_F(UdevHotplugSourceTest, EachAddAndRemoveGivesOneChangeOnTheMainThreadToTheFirstStartOnly) {
    UdevHotplugSource source(scheduler_, "udev");
    int secondChanges = 0;
    source.start([this] { ++changes_; });
    source.start([&secondChanges] { ++secondChanges; });
    ASSERT_TRUE(source.isListening());

    const GText device = addUSBDevice("1-1", "usb_device");
    EXPECT_EQ(scheduler_.runWhen(1, eventWait), 1u);
    EXPECT_EQ(scheduler_.runWhen(2, quietWait), 0u);
    EXPECT_EQ(changes_, 1);

    umockdev_testbed_uevent(testbed_.get(), device.get(), "remove");
    umockdev_testbed_remove_device(testbed_.get(), device.get());
    EXPECT_EQ(scheduler_.runWhen(1, eventWait), 1u);
    EXPECT_EQ(scheduler_.runWhen(2, quietWait), 0u);
    EXPECT_EQ(changes_, 2);
    EXPECT_EQ(secondChanges, 0);
}

TEST_F(UdevHotplugSourceTest, OtherEventsAndDevicesPresentAtStartRaiseNothing) {
    const GText present = addUSBDevice("1-1", "usb_device");
    UdevHotplugSource source(scheduler_, "udev");
    source.start([this] { ++changes_; });

    umockdev_testbed_uevent(testbed_.get(), present.get(), "change");
    const GText interface = addUSBDevice("1-1:1.0", "usb_interface");
    EXPECT_EQ(scheduler_.runWhen(1, quietWait), 0u);
    EXPECT_EQ(changes_, 0);
}

// Needs no test bed: libudev refuses an unknown netlink source outright.
TEST(UdevHotplugSourceFailure, AStartThatCantListenStaysSilent) {
    PostCollector scheduler;
    int changes = 0;
    UdevHotplugSource source(scheduler, "no-such-source");
    source.start([&changes] { ++changes; });
    EXPECT_FALSE(source.isListening());
    EXPECT_EQ(scheduler.runWhen(1, 0ms), 0u);
    EXPECT_EQ(changes, 0);
}

} // namespace
} // namespace korvane
