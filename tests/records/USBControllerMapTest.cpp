#include "records/USBControllerMap.h"

#include <gtest/gtest.h>

namespace korvane {
namespace {

USBControllerMap xhc1() {
    USBControllerMap controller;
    controller.name = "XHC1";
    controller.location = "14";
    controller.vendorID = 0x8086;
    controller.deviceID = 0xa36d;
    controller.ioNameMatch = "pci8086,a36d";
    return controller;
}

USBPortMap port(std::string name, std::string location, ByteBuffer data) {
    USBPortMap p;
    p.name = std::move(name);
    p.location = std::move(location);
    p.portData = std::move(data);
    return p;
}

TEST(USBControllerMapTest, StableIDJoinsPCIPairNameLocationAndMatch) {
    EXPECT_EQ(xhc1().stableID(), "8086:a36d|XHC1|14|pci8086,a36d");
}

TEST(USBControllerMapTest, IDsAboveFFFFKeepAllTheirDigits) {
    auto controller = xhc1();
    controller.vendorID = 0x18086;
    controller.deviceID = 0x5;
    EXPECT_EQ(controller.stableID(), "18086:0005|XHC1|14|pci8086,a36d");
}

TEST(USBControllerMapTest, PortKeyLeavesOutThePortLocationButNotTheController) {
    const auto controller = xhc1();
    auto p = port("HS01", "14100000", portData(1));
    const auto key = usbPortStableID(controller, p);
    EXPECT_EQ(key, "8086:a36d|XHC1|14|HS01|01000000");
    EXPECT_EQ(p.stableID(), "HS01|14100000|01000000");

    p.location = "14200000";
    EXPECT_EQ(usbPortStableID(controller, p), key) << "the user's choices must survive a moved port node";
    EXPECT_NE(p.stableID(), "HS01|14100000|01000000");

    p.connector = 10;
    p.activeDevice = "Keyboard";
    p.comment = "note";
    EXPECT_EQ(usbPortStableID(controller, p), key);
    EXPECT_EQ(p.stableID(), "HS01|14200000|01000000");
}

TEST(USBControllerMapTest, SamePortOnTwoControllersHasTwoKeys) {
    auto other = xhc1();
    other.name = "XHC2";
    other.location = "0";
    const auto p = port("SSP1", "00100000", portData(3));
    EXPECT_NE(usbPortStableID(xhc1(), p), usbPortStableID(other, p));
}

TEST(USBControllerMapTest, PartsAreNotEscaped) {
    auto controller = xhc1();
    controller.name = "A|B";
    const auto p = port("HS|1", "", {});
    EXPECT_EQ(usbPortStableID(controller, p), "8086:a36d|A|B|14|HS|1|");
    EXPECT_EQ(p.stableID(), "HS|1||");
}

TEST(USBControllerMapTest, FiveBytePortDataShowsTenDigits) {
    const auto p = port("HS01", "1", {1, 0, 0, 0, 0xff});
    EXPECT_EQ(usbPortStableID(xhc1(), p), "8086:a36d|XHC1|14|HS01|01000000ff");
    EXPECT_EQ(portNumber(p.portData), 1);
}

} // namespace
} // namespace korvane
