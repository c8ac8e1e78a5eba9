#include "platform/linux/SysfsReading.h"

#include "support/TempFolder.h"

#include <fstream>
#include <gtest/gtest.h>
#include <sys/stat.h>

namespace korvane {
namespace {

class SysfsReadingTest : public ::testing::Test {
  protected:
    std::filesystem::path write(const std::string& name, const std::string& bytes) {
        const auto path = folder_.path() / name;
        std::ofstream(path, std::ios::binary) << bytes;
        return path;
    }
    TempFolder folder_;
};

TEST_F(SysfsReadingTest, AttributesLoseTheKernelsLineFeedAndStayWithinTheLimit) {
    EXPECT_EQ(sysfs::readAttribute(write("a", "0x8086\n")), "0x8086");
    EXPECT_EQ(sysfs::readAttribute(write("b", "")), "");
    EXPECT_EQ(sysfs::readAttribute(write("big", std::string(100000, 'x')))->size(), sysfs::maxAttributeBytes);
    EXPECT_EQ(sysfs::readHex(write("c", "0x0c0330\n")), 0x0c0330u);
    EXPECT_EQ(sysfs::readDecimal(write("d", "12\n")), 12u);
}

TEST_F(SysfsReadingTest, WhatIsNoReadableTextGivesNoValue) {
    EXPECT_EQ(sysfs::readText(write("latin1", "Caf\xe9\n")), std::nullopt);
    EXPECT_EQ(sysfs::readText(write("blank", "  \n")), std::nullopt);
    EXPECT_EQ(sysfs::readHex(write("junk", "0x12zz\n")), std::nullopt);
    EXPECT_EQ(sysfs::readHex(write("huge", "0x1234567890\n")), std::nullopt);
    EXPECT_EQ(sysfs::readDecimal(write("negative", "-1\n")), std::nullopt);
    EXPECT_EQ(sysfs::readAttribute(folder_.path() / "missing"), std::nullopt);
    EXPECT_EQ(sysfs::readAttribute(folder_.path()), std::nullopt);
}

TEST_F(SysfsReadingTest, AFifoOrALinkLoopNeitherBlocksNorHangs) {
    ASSERT_EQ(::mkfifo((folder_.path() / "fifo").c_str(), 0600), 0);
    EXPECT_EQ(sysfs::readAttribute(folder_.path() / "fifo"), std::nullopt);
    std::filesystem::create_symlink("loop-b", folder_.path() / "loop-a");
    std::filesystem::create_symlink("loop-a", folder_.path() / "loop-b");
    EXPECT_EQ(sysfs::readAttribute(folder_.path() / "loop-a" / "vendor"), std::nullopt);
    EXPECT_EQ(sysfs::linkTargetName(folder_.path() / "loop-a"), "loop-b");
}

TEST_F(SysfsReadingTest, SubdirectoriesLeaveOutLinksAndSortDigitRunsByValue) {
    for (const char* name : {"usb10", "usb2", "usb1"}) {
        std::filesystem::create_directory(folder_.path() / name);
    }
    std::filesystem::create_directory_symlink(".", folder_.path() / "self");
    write("file", "x");
    EXPECT_EQ(sysfs::subdirectories(folder_.path()), (std::vector<std::string>{"usb1", "usb2", "usb10"}));
    EXPECT_TRUE(sysfs::subdirectories(folder_.path() / "missing").empty());
}

} // namespace
} // namespace korvane
