#include "platform/linux/XHCIPortLayout.h"

#include <gtest/gtest.h>

namespace korvane {
namespace {

std::string capability(const char* revision, const char* portInfo) {
    return std::string("EXTCAP_REVISION = ") + revision +
           "\nEXTCAP_NAME = 0x20425355\nEXTCAP_PORTINFO = " + portInfo + "\nEXTCAP_PORTTYPE = 0x00000000\n";
}

TEST(XHCIPortLayoutTest, RootHubPortsMapToTheirProtocolsControllerPortsInOrder) {
    using Ports = std::vector<std::uint32_t>; // USB 2's, then USB 3's
    // QEMU's qemu-xhci: USB 3 on ports 1-4, USB 2 on ports 5-8.
    const auto qemu = XHCIPortLayout::fromCapabilityTexts(
        {capability("0x02000802", "0x00000405"), capability("0x03000802", "0x00000401")});
    ASSERT_TRUE(qemu);
    EXPECT_EQ(std::pair(qemu->usb2, qemu->usb3), std::pair(Ports{5, 6, 7, 8}, Ports{1, 2, 3, 4}));

    // Two USB 3 capabilities (3.0 and 3.1 ports) join into one root hub.
    const auto split = XHCIPortLayout::fromCapabilityTexts({capability("0x02000802", "0x00000201"),
                                                            capability("0x03100802", "0x00000105"),
                                                            capability("0x03000802", "0x00000203")});
    ASSERT_TRUE(split);
    EXPECT_EQ(std::pair(split->usb2, split->usb3), std::pair(Ports{1, 2}, Ports{3, 4, 5}));
}

TEST(XHCIPortLayoutTest, DamagedOrMissingCapabilitiesGiveNoLayout) {
    EXPECT_FALSE(XHCIPortLayout::fromCapabilityTexts({}));
    EXPECT_FALSE(XHCIPortLayout::fromCapabilityTexts({"EXTCAP_REVISION = 0x03000802\n"}));
    EXPECT_FALSE(XHCIPortLayout::fromCapabilityTexts({capability("0x03000802", "0x00000000")}));
    EXPECT_FALSE(XHCIPortLayout::fromCapabilityTexts({capability("0x03000802", "0x0000ffff")}));
    EXPECT_FALSE(XHCIPortLayout::fromCapabilityTexts({capability("junk", "0x00000401")}));
    EXPECT_FALSE(XHCIPortLayout::read("/nonexistent/debugfs"));
}

} // namespace
} // namespace korvane
