#pragma once

#include "records/PortNumber.h"
#include "records/USBControllerMap.h"

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

} // namespace korvane
