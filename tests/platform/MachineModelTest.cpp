#include "platform/MachineModel.h"

#include "support/FakeTool.h"
#include "support/TempFolder.h"

#include <gtest/gtest.h>

namespace korvane {
namespace {

TEST(SysctlMachineModel, TheToolsTrimmedAnswerOrNothingWhenItFailsOrIsSilent) {
    TempFolder folder;
    EXPECT_EQ(sysctlMachineModel(writeFakeTool(folder.path(), "sysctl", "echo '  iMac19,1  '")), "iMac19,1");
    EXPECT_EQ(sysctlMachineModel(writeFakeTool(folder.path(), "fails", "echo 'unknown oid'; exit 1")),
              std::nullopt);
    EXPECT_EQ(sysctlMachineModel(writeFakeTool(folder.path(), "blank", "echo '  '")), std::nullopt);
    EXPECT_EQ(sysctlMachineModel((folder.path() / "missing").string()), std::nullopt);
}

} // namespace
} // namespace korvane
