// Device events themselves are tested end to end, in a real kernel: the QEMU
// run of `korvane watch` across a plug and an unplug (e2e/run-e2e.sh).

#include "platform/linux/UdevHotplugSource.h"

#include "support/ManualScheduler.h"

#include <gtest/gtest.h>

namespace korvane {
namespace {

TEST(UdevHotplugSource, AStartThatCantListenStaysSilent) {
    ManualScheduler scheduler;
    int changes = 0;
    // libudev refuses an unknown netlink source outright.
    UdevHotplugSource source(scheduler, "no-such-source");
    source.start([&changes] { ++changes; });
    EXPECT_FALSE(source.isListening());
    scheduler.runUntilIdle();
    EXPECT_EQ(changes, 0);
}

} // namespace
} // namespace korvane
