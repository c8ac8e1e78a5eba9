#include "records/USBControllerMap.h"

#include <cinttypes>
#include <cstdio>

namespace korvane {

namespace {

std::string pciPair(std::int64_t vendorID, std::int64_t deviceID) {
    char text[48];
    std::snprintf(text, sizeof text, "%04" PRIx64 ":%04" PRIx64, static_cast<std::uint64_t>(vendorID),
                  static_cast<std::uint64_t>(deviceID));
    return text;
}

} // namespace

std::string USBPortMap::stableID() const {
    return name + "|" + location + "|" + hexString(portData);
}

std::string USBControllerMap::stableID() const {
    return pciPair(vendorID, deviceID) + "|" + name + "|" + location + "|" + ioNameMatch;
}

std::string usbPortStableID(const USBControllerMap& controller, const USBPortMap& port) {
    return pciPair(controller.vendorID, controller.deviceID) + "|" + controller.name + "|" +
           controller.location + "|" + port.name + "|" + hexString(port.portData);
}

} // namespace korvane
