#include "tools/ProcessRunner.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

namespace korvane {
namespace {

TEST(ProcessRunner, ADescriptorAnotherThreadLeftInheritableStaysOutOfTheTool) {
    // What another thread's pipe looks like between pipe() and its fcntl():
    // no FD_CLOEXEC yet. POSIX_SPAWN_CLOEXEC_DEFAULT keeps it out all the same.
    int ends[2];
    ASSERT_EQ(::pipe(ends), 0);
    const std::string listing = runProcess("/bin/ls", {"/dev/fd/"}, std::nullopt, 30);
    ::close(ends[0]);
    ::close(ends[1]);
    EXPECT_EQ(listing, "0\n1\n2\n3\n");
}

TEST(ProcessRunner, AToolAskedToReadNothingReadsEndOfFileAtOnce) {
    EXPECT_EQ(runProcess("/bin/cat", {}, std::nullopt, 10, ChildInput::none), "");
}

} // namespace
} // namespace korvane
