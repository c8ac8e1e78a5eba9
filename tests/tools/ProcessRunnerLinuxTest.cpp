#include "tools/ProcessRunner.h"

#include <gtest/gtest.h>

namespace korvane {
namespace {

TEST(ProcessRunner, AToolAskedToReadNothingGetsNoTerminalOrPipeOfOurs) {
    EXPECT_EQ(runProcess("/bin/readlink", {"/proc/self/fd/0"}, std::nullopt, 10, ChildInput::none),
              "/dev/null\n");
}

} // namespace
} // namespace korvane
