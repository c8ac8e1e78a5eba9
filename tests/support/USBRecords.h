#pragma once

#include "records/PortNumber.h"
#include "records/USBControllerMap.h"

#include <map>
#include <string>
#include <vector>

namespace korvane {

// Ports and controllers as the tests make them: nothing filled in that a test
// doesn't set, so whatever an output shows came from the test. Port data of
// odd lengths is written out as a whole USBPortMap where a test needs it.
inline USBPortMap makePort(std::string name, std::uint32_t number, std::string activeDevice = "",
                           std::int64_t connector = 3) {
    return {std::move(name), "", connector, portData(number), "", std::move(activeDevice)};
}

// `count` ports HS01.., the first `active` of them with a device.
inline std::vector<USBPortMap> makePorts(int count, int active = 0) {
    std::vector<USBPortMap> ports;
    for (int i = 1; i <= count; ++i) {
        const std::string name = (i < 10 ? "HS0" : "HS") + std::to_string(i);
        ports.push_back(
            makePort(name, static_cast<std::uint32_t>(i), i <= active ? "Device " + std::to_string(i) : ""));
    }
    return ports;
}

inline USBControllerMap makeController(std::string name, std::int64_t vendorID, std::int64_t deviceID,
                                       std::vector<USBPortMap> ports = {}, std::string databaseName = "") {
    return {std::move(name), "", vendorID, deviceID, "", "", std::move(databaseName), std::move(ports)};
}

// Intel's XHC1 with HS01..HS0`usb2Ports` and SS01..SS04 (numbers 17 to 20),
// each SS port the companion of the HS port of its number, and `devices` in
// the ports they name: the socket pairs that mapping by plugging works on.
inline USBControllerMap pairedXHC1(std::uint32_t usb2Ports,
                                   const std::map<std::string, std::string>& devices) {
    auto controller = makeController("XHC1", 0x8086, 0xa36d);
    for (std::uint32_t i = 1; i <= usb2Ports; ++i) {
        controller.ports.push_back(makePort("HS0" + std::to_string(i), i));
    }
    for (std::uint32_t i = 1; i <= 4; ++i) {
        controller.ports.push_back(makePort("SS0" + std::to_string(i), 16 + i));
    }
    for (std::size_t i = 0; i < 4; ++i) {
        controller.ports[i].companionKey = usbPortStableID(controller, controller.ports[usb2Ports + i]);
        controller.ports[usb2Ports + i].companionKey = usbPortStableID(controller, controller.ports[i]);
    }
    for (auto& port : controller.ports) {
        if (const auto device = devices.find(port.name); device != devices.end()) {
            port.activeDevice = device->second;
        }
    }
    return controller;
}

} // namespace korvane
