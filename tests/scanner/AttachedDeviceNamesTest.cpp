#include "scanner/AttachedDeviceNames.h"

#include "ScannerTestSupport.h"

#include <gtest/gtest.h>

namespace korvane {
namespace {

struct DeviceNameCase {
    std::string name;
    std::string nodeName;
    std::string className;
    PropertyDictionary properties;
    std::optional<std::string> expected;

    friend void PrintTo(const DeviceNameCase& row, std::ostream* out) { *out << row.name; }
};

class DeviceNames : public ::testing::TestWithParam<DeviceNameCase> {
  protected:
    TinyIDsDatabases databases;
};

TEST_P(DeviceNames, PickTheNameAPersonWouldRead) {
    const auto& param = GetParam();
    NativeUSBNode node(param.nodeName, "", param.className, param.properties, nullptr);
    EXPECT_EQ(usbAttachedDeviceDisplayName(node, databases.names()), param.expected);
}

const char* const host = "IOUSBHostDevice";
using Row = DeviceNameCase;
using B = ByteBuffer;

// clang-format off
INSTANTIATE_TEST_SUITE_P(Nodes, DeviceNames, ::testing::Values(
    Row{"PlaceholderFallsThrough", "x", host, {{"USB Product Name", "Root Hub Simulation"}, {"USB Vendor Name", "Acme"}}, "Acme"},
    Row{"ProductNameTrimmed", "x", host, {{"USB Product Name", " Keyboard "}}, "Keyboard"},
    Row{"ProductNameFromBytes", "x", host, {{"USB Product Name", B{'M', 'o', 'u', 's', 'e', 0}}}, "Mouse"},
    Row{"NameBeforeDeviceTest", "x", "IOService", {{"Product", "Dock"}}, "Dock"},
    Row{"NumberedWhenNothingElse", "", host, {{"idVendor", 0x05AC}, {"idProduct", 0x12A8}}, "USB Device 05AC:12A8"},
    Row{"NodeNameBeforeNumbers", "iPhone@14100000", host, {{"idVendor", 0x05AC}, {"idProduct", 0x12A8}}, "iPhone"},
    Row{"DatabaseName", host, host, {{"idVendor", 0x046D}, {"idProduct", 0xC52B}}, "Logitech, Inc. Unifying Receiver"},
    Row{"PlainFallbackWithoutIDs", "", host, {}, "USB Device"},
    Row{"ClassNamedNodeReportsItsClass", host, host, {}, "IOUSBHostDevice"},
    Row{"ProviderClassIsNoName", "Webcam", host, {{"IOProviderClass", "IOUSBHostDevice"}}, "Webcam"},
    Row{"BluetoothByName", "Bluetooth USB Host Controller", host, {{"USB Product Name", "BCM20702A0"}}, "Bluetooth"},
    Row{"BluetoothByDriverClass", "BT", "BroadcomBluetoothHostControllerUSBTransport", {}, "Bluetooth"},
    Row{"BluetoothTransportText", "BT", "IOService", {{"BluetoothTransport", "usb BLUETOOTH"}}, "Bluetooth"},
    Row{"BluetoothTransportNumberIgnored", "BT", "IOService", {{"BluetoothTransport", 1}}, std::nullopt},
    Row{"LocationIDMakesADevice", "Card Reader", "AppleSDXC", {{"locationID", 0x14200000}}, "Card Reader"},
    Row{"PlainServiceIsNoDevice", "Card Reader", "IOService", {}, std::nullopt},
    Row{"UsbPortClassNeedsAProperty", "Thing", "IOUSBFooPort", {}, std::nullopt},
    Row{"UsbPortClassWithAddress", "Thing", "IOUSBFooPort", {{"USB Address", 3}}, "Thing"},
    Row{"PortNodeIsNoDevice", "HS01", "AppleUSB20XHCIPort", {{"USB Product Name", "X"}}, std::nullopt},
    Row{"InterfaceIsNoDevice", "Keyboard", "IOUSBHostInterface", {{"USB Product Name", "Keyboard"}}, std::nullopt}),
    [](const ::testing::TestParamInfo<Row>& row) { return row.param.name; });
// clang-format on

TEST(FirstAttachedDeviceName, WalksDepthFirstPastPortsAndInterfaces) {
    TinyIDsDatabases databases;
    auto root = makeRoot();
    auto& port = root->addChild("HS01", "", "AppleUSB20XHCIPort", {});
    EXPECT_EQ(firstAttachedDeviceName(port, databases.names()), "") << "no device, not active";

    auto& innerPort = port.addChild("HS02", "", "AppleUSB20XHCIPort", {});
    auto& silent = innerPort.addChild("x", "", "IOService", {});
    auto& interface = silent.addChild("Keyboard", "", "IOUSBHostInterface", {});
    interface.addChild("Headset", "", "AppleUSBAudioEngine", {{"locationID", 1}});
    port.addChild("Later", "", host, {});
    EXPECT_EQ(firstAttachedDeviceName(port, databases.names()), "Headset");

    AttachedDeviceNameCache cache(databases.names());
    EXPECT_EQ(cache.firstAttachedDeviceName(silent), "Headset");
    EXPECT_EQ(cache.firstAttachedDeviceName(port), "Headset");
    EXPECT_EQ(cache.firstAttachedDeviceName(innerPort), "Headset");
}

TEST(FirstAttachedDeviceName, CacheGoesOnPastASubtreeAlreadyKnownEmpty) {
    TinyIDsDatabases databases;
    auto root = makeRoot();
    auto& port = root->addChild("HS01", "", "AppleUSB20XHCIPort", {});
    auto& emptyPort = port.addChild("HS02", "", "AppleUSB20XHCIPort", {});
    emptyPort.addChild("HS03", "", "AppleUSB20XHCIPort", {});
    port.addChild("Mouse", "", host, {});
    AttachedDeviceNameCache cache(databases.names());
    EXPECT_EQ(cache.firstAttachedDeviceName(emptyPort), "");
    EXPECT_EQ(cache.firstAttachedDeviceName(port), "Mouse");
    EXPECT_EQ(cache.firstAttachedDeviceName(*root), "Mouse");
}

} // namespace
} // namespace korvane
