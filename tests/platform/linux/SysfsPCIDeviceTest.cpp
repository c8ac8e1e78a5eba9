#include "platform/linux/SysfsPCIDevice.h"

#include "linux/SysfsTree.h"
#include "support/TempFolder.h"

#include <gtest/gtest.h>

namespace korvane {
namespace {

TEST(PCIAddressTest, DebugTextIsBusDeviceAndFunctionInDecimalAsTheMacWritesThem) {
    const std::pair<const char*, const char*> rows[] = {
        {"0000:00:14.0", "0:20:0"}, {"0000:05:00.3", "5:0:3"}, {"0001:3a:1f.7", "58:31:7"}};
    for (const auto& [name, debugText] : rows) {
        const auto address = PCIAddress::parse(name);
        ASSERT_TRUE(address) << name;
        EXPECT_EQ(address->debugText(), debugText) << name;
    }
    for (const char* bad :
         {"pci0000:00", "0000:00:14.8", "0000:00:14", "0000:0g:14.0", "0000:00:14.0x", ""}) {
        EXPECT_FALSE(PCIAddress::parse(bad)) << bad;
    }
}

class SysfsPCIDeviceTest : public ::testing::Test {
  protected:
    void SetUp() override { writeSysfsTree(folder_.path(), "pci-devices.tree"); }
    SysfsPCIDevice device(const std::string& name) const {
        return SysfsPCIDevice(folder_.path() / name, *PCIAddress::parse(name));
    }
    TempFolder folder_;
};

TEST_F(SysfsPCIDeviceTest, PropertiesFollowTheRegistrysConventions) {
    const std::string compatible("pci106b,1\0pci8086,a36d\0pciclass,0c0330\0", 39);
    EXPECT_EQ(device("0000:00:14.0").properties(),
              (PropertyDictionary{{"vendor-id", ByteBuffer{0x86, 0x80, 0, 0}},
                                  {"device-id", ByteBuffer{0x6d, 0xa3, 0, 0}},
                                  {"subsystem-vendor-id", ByteBuffer{0x6b, 0x10, 0, 0}},
                                  {"subsystem-id", ByteBuffer{1, 0, 0, 0}},
                                  {"class-code", ByteBuffer{0x30, 0x03, 0x0c, 0}},
                                  {"revision-id", ByteBuffer{0x10, 0, 0, 0}},
                                  {"IOName", "XHC"},
                                  {"name", ByteBuffer{'X', 'H', 'C', 0}},
                                  {"acpi-path", "\\_SB_.PCI0.XHC_"},
                                  {"pcidebug", "0:20:0"},
                                  {"compatible", ByteBuffer(compatible.begin(), compatible.end())}}));
}

TEST_F(SysfsPCIDeviceTest, UnreadableIDsGiveAPoorerNodeNotAFailure) {
    const std::string compatible("pciclass,030000\0", 16);
    EXPECT_EQ(device("0000:00:02.0").properties(),
              (PropertyDictionary{{"class-code", ByteBuffer{0, 0, 0x03, 0}},
                                  {"compatible", ByteBuffer(compatible.begin(), compatible.end())},
                                  {"pcidebug", "0:2:0"}}));
    EXPECT_FALSE(device("0000:00:02.0").isXHCI());
}

} // namespace
} // namespace korvane
