#include "records/USBControllerMap.h"

#include <gtest/gtest.h>

namespace korvane {
namespace {

TEST(USBControllerMap, APortKeyNamesItsControllerButNotItsOwnLocation) {
    USBControllerMap controller{"XHC1", "14", 0x8086, 0xa36d, "pci8086,a36d", "", "", {}};
    USBPortMap port{"HS01", "14100000", 3, portData(1), "", ""};
    const auto key = usbPortStableID(controller, port);
    EXPECT_EQ(key, "8086:a36d|XHC1|14|HS01|01000000");

    port.location = "14200000";
    port.connector = 10;
    port.activeDevice = "Keyboard";
    EXPECT_EQ(usbPortStableID(controller, port), key) << "the user's choices must survive a moved port node";

    controller.name = "XHC2";
    EXPECT_NE(usbPortStableID(controller, port), key) << "the same port of another controller";

    controller.vendorID = 0x18086;
    port.portData = {1, 0, 0, 0, 0xff};
    EXPECT_EQ(usbPortStableID(controller, port), "18086:a36d|XHC2|14|HS01|01000000ff")
        << "wide IDs and long port data keep all their digits";
}

} // namespace
} // namespace korvane
