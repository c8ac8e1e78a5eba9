#include "scanner/AttachedDeviceNames.h"

#include "support/IDsHome.h"
#include "support/RegistryTrees.h"

#include <gtest/gtest.h>

namespace korvane {
namespace {

using B = ByteBuffer;
const char* const host = "IOUSBHostDevice";

TEST(AttachedDeviceNames, TheNameAPersonWouldRead) {
    IDsHome ids;
    const std::tuple<const char*, const char*, PropertyDictionary, std::optional<std::string>> rows[] = {
        {"x", host, {{"USB Product Name", "Root Hub Simulation"}, {"USB Vendor Name", "Acme"}}, "Acme"},
        {"x", host, {{"USB Product Name", B{'M', 'o', 'u', 's', 'e', 0}}}, "Mouse"},
        {"", host, {{"idVendor", 0x05AC}, {"idProduct", 0x12A8}}, "USB Device 05AC:12A8"},
        {"iPhone@14100000", host, {{"idVendor", 0x05AC}, {"idProduct", 0x12A8}}, "iPhone"},
        {host, host, {{"idVendor", 0x046D}, {"idProduct", 0xC52B}}, "Logitech, Inc. Unifying Receiver"},
        {"Webcam", host, {{"IOProviderClass", "IOUSBHostDevice"}}, "Webcam"},
        // A Bluetooth module's product string changes with its firmware.
        {"Bluetooth USB Host Controller", host, {{"USB Product Name", "BCM20702A0"}}, "Bluetooth"},
        {"BT", "BroadcomBluetoothHostControllerUSBTransport", {}, "Bluetooth"},
        {"Card Reader", "AppleSDXC", {{"locationID", 0x14200000}}, "Card Reader"},
        {"Card Reader", "IOService", {}, std::nullopt},
        {"HS01", "AppleUSB20XHCIPort", {{"USB Product Name", "X"}}, std::nullopt},
        {"Keyboard", "IOUSBHostInterface", {{"USB Product Name", "Keyboard"}}, std::nullopt},
    };
    for (const auto& [name, className, properties, expected] : rows) {
        EXPECT_EQ(usbAttachedDeviceDisplayName(NativeUSBNode(name, "", className, properties, nullptr),
                                               ids.names()),
                  expected)
            << name << " of " << className;
    }
}

TEST(AttachedDeviceNames, TheFirstDeviceBelowIsFoundPastPortsInterfacesAndSubtreesKnownEmpty) {
    IDsHome ids;
    auto root = makeRoot();
    auto& port = root->addChild("HS01", "", "AppleUSB20XHCIPort", {});
    auto& emptyPort = port.addChild("HS02", "", "AppleUSB20XHCIPort", {});
    emptyPort.addChild("HS03", "", "AppleUSB20XHCIPort", {});
    auto& silent = port.addChild("x", "", "IOService", {});
    silent.addChild("Keyboard", "", "IOUSBHostInterface", {})
        .addChild("Headset", "", "AppleUSBAudioEngine", {{"locationID", 1}});
    port.addChild("Later", "", host, {});
    EXPECT_EQ(firstAttachedDeviceName(port, ids.names()), "Headset");

    AttachedDeviceNameCache cache(ids.names());
    EXPECT_EQ(cache.firstAttachedDeviceName(emptyPort), "");
    EXPECT_EQ(cache.firstAttachedDeviceName(port), "Headset");
    EXPECT_EQ(cache.firstAttachedDeviceName(silent), "Headset");
    EXPECT_EQ(cache.firstAttachedDeviceName(*root), "Headset");
}

} // namespace
} // namespace korvane
