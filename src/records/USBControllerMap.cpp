#include "records/USBControllerMap.h"

#include "records/PCIIdentityText.h"

namespace korvane {

std::string USBPortMap::stableID() const {
    return name + "|" + location + "|" + hexString(portData);
}

std::string USBControllerMap::stableID() const {
    return vendorDeviceText(vendorID, deviceID) + "|" + name + "|" + location + "|" + ioNameMatch;
}

std::string usbPortStableID(const USBControllerMap& controller, const USBPortMap& port) {
    return vendorDeviceText(controller.vendorID, controller.deviceID) + "|" + controller.name + "|" +
           controller.location + "|" + port.name + "|" + hexString(port.portData);
}

} // namespace korvane
