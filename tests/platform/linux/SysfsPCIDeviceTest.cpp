#include "platform/linux/SysfsPCIDevice.h"

#include "linux/SysfsFixtureWriter.h"
#include "support/TempFolder.h"

#include <gtest/gtest.h>

namespace korvane {
namespace {

TEST(PCIAddressTest, DebugTextIsBusDeviceAndFunctionInDecimalAsTheMacWritesThem) {
    const std::pair<const char*, const char*> rows[] = {{"0000:00:14.0", "0:20:0"},
                                                        {"0000:05:00.3", "5:0:3"},
                                                        {"0000:39:00.0", "57:0:0"},
                                                        {"0001:3a:1f.7", "58:31:7"}};
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
    PropertyDictionary propertiesOf(const std::string& name) const {
        return SysfsPCIDevice(folder_.path() / name, *PCIAddress::parse(name)).properties();
    }
    TempFolder folder_;
    SysfsFixtureWriter fixture_{folder_.path()};
};

TEST_F(SysfsPCIDeviceTest, PropertiesFollowTheRegistrysConventions) {
    fixture_.pciFunction("0000:00:14.0", "0x8086", "0xa36d", "0x0c0330");
    fixture_.firmwareNode("0000:00:14.0", "device:1d", "\\_SB_.PCI0.XHC_", "0x00140000");
    const auto properties = propertiesOf("0000:00:14.0");
    EXPECT_EQ(properties.at("vendor-id"), PropertyValue(ByteBuffer{0x86, 0x80, 0, 0}));
    EXPECT_EQ(properties.at("device-id"), PropertyValue(ByteBuffer{0x6d, 0xa3, 0, 0}));
    EXPECT_EQ(properties.at("class-code"), PropertyValue(ByteBuffer{0x30, 0x03, 0x0c, 0}));
    EXPECT_EQ(properties.at("revision-id"), PropertyValue(ByteBuffer{0x10, 0, 0, 0}));
    EXPECT_EQ(properties.at("IOName"), PropertyValue("XHC"));
    EXPECT_EQ(properties.at("name"), PropertyValue(ByteBuffer{'X', 'H', 'C', 0}));
    EXPECT_EQ(properties.at("acpi-path"), PropertyValue("\\_SB_.PCI0.XHC_"));
    EXPECT_EQ(properties.at("pcidebug"), PropertyValue("0:20:0"));
    EXPECT_EQ(properties.count("location"), 0u) << "the Mac's PCI devices have none";
    const std::string compatible("pci106b,1\0pci8086,a36d\0pciclass,0c0330\0", 39);
    EXPECT_EQ(properties.at("compatible"), PropertyValue(ByteBuffer(compatible.begin(), compatible.end())));
}

TEST_F(SysfsPCIDeviceTest, WithoutAFirmwareNameTheIDsNameTheDevice) {
    fixture_.pciFunction("0000:05:00.3", "0x1022", "0x15e0", "0x0c0330");
    // A companion whose path can't be read, as in one of the QEMU captures.
    fixture_.link("0000:05:00.3/firmware_node", "../missing");
    const auto properties = propertiesOf("0000:05:00.3");
    EXPECT_EQ(properties.at("IOName"), PropertyValue("pci1022,15e0"));
    EXPECT_EQ(properties.count("acpi-path"), 0u);
    EXPECT_EQ(properties.at("pcidebug"), PropertyValue("5:0:3"));
}

TEST_F(SysfsPCIDeviceTest, UnreadableIDsGiveAPoorerNodeNotAFailure) {
    fixture_.attribute("0000:00:02.0/vendor", "\xff\xfe");
    fixture_.attribute("0000:00:02.0/class", "0x030000");
    const auto properties = propertiesOf("0000:00:02.0");
    EXPECT_EQ(properties.count("vendor-id"), 0u);
    EXPECT_EQ(properties.count("IOName"), 0u);
    EXPECT_EQ(properties.at("compatible"), PropertyValue(ByteBuffer{'p', 'c', 'i', 'c', 'l', 'a', 's', 's',
                                                                    ',', '0', '3', '0', '0', '0', '0', 0}));
    EXPECT_FALSE(
        SysfsPCIDevice(folder_.path() / "0000:00:02.0", *PCIAddress::parse("0000:00:02.0")).isXHCI());
}

} // namespace
} // namespace korvane
