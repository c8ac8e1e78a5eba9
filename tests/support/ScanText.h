#pragma once

#include "records/PCIIdentityText.h"
#include "records/USBControllerMap.h"

#include <string>
#include <vector>

namespace korvane {

// A scan's controllers as text to read and compare at a glance, one line for
// each controller and one for each of its ports:
//   8086:a36d XHC1@14  AppleIntelCNLUSBXHCI  pci8086,a36d  "Intel Corporation Cannon Lake ..."
//     HS13  13  255  @14d00000  "FaceTime HD Camera (Built-in)"  // the comment, when there is one
// and, for a port with a companion, "  with SS01" (same controller) or
// "  with XHC2@00000000 SSP1" behind the device.
// With `withSources`, each connector code is followed by its source and the
// line ends with the port's place when it has one: "3 firmware ... (back panel, left)".
inline std::string scanText(const std::vector<USBControllerMap>& controllers, bool withSources = false) {
    auto companionOf = [&controllers](const USBPortMap& port, const USBControllerMap& own) -> std::string {
        for (const auto& controller : controllers) {
            for (const auto& other : controller.ports) {
                if (usbPortStableID(controller, other) == port.companionKey) {
                    return "  with " +
                           (&controller == &own ? "" : controller.name + "@" + controller.location + " ") +
                           other.name;
                }
            }
        }
        return port.companionKey.empty() ? "" : "  with ?" + port.companionKey;
    };
    std::string text;
    for (const auto& controller : controllers) {
        text += vendorDeviceText(controller.vendorID, controller.deviceID) + " " + controller.name + "@" +
                controller.location + "  " + controller.providerClass + "  " + controller.ioNameMatch +
                "  \"" + controller.usbDeviceName + "\"\n";
        for (const auto& port : controller.ports) {
            const auto number = portNumber(port.portData);
            text += "  " + port.name + "  " + (number ? std::to_string(*number) : "-") + "  " +
                    std::to_string(port.connector) +
                    (withSources ? " " + std::string(connectorSourceName(port.connectorSource)) : "") +
                    "  @" + port.location + "  \"" + port.activeDevice + "\"" + companionOf(port, controller);
            if (withSources && port.place) {
                text += "  (" + portPlaceText(*port.place) + ")";
            }
            text += port.comment.empty() ? "\n" : "  // " + port.comment + "\n";
        }
    }
    return text;
}

inline std::string scanText(const USBScanResult& result, bool withSources = false) {
    return scanText(result.controllers, withSources);
}

} // namespace korvane
