#pragma once

#include "records/USBPortMap.h"

#include <cstdint>
#include <string>
#include <vector>

namespace korvane {

// One xHCI controller and its ports.
struct USBControllerMap {
    std::string name;
    std::string location;
    std::int64_t vendorID = 0;
    std::int64_t deviceID = 0;
    std::string ioNameMatch;
    std::string providerClass;
    std::string usbDeviceName;
    std::vector<USBPortMap> ports;

    // "vvvv:dddd|name|location|ioNameMatch": the controller's identity in views
    // and the key of per-controller state.
    std::string stableID() const;

    // The name a person reads: "USB Controller" for one the registry left unnamed.
    std::string displayName() const { return name.empty() ? "USB Controller" : name; }

    bool operator==(const USBControllerMap&) const = default;
};

// "vvvv:dddd|controller name|controller location|port name|hex(portData)". The
// port's own location is left out on purpose: it is the one key that survives
// a rescan with the user's selection and connector choices attached.
std::string usbPortStableID(const USBControllerMap& controller, const USBPortMap& port);

struct USBScanResult {
    std::vector<USBControllerMap> controllers;
    // What the scan could not learn and how the user can get it, one
    // sentence each, to be told once; none when nothing is missing.
    std::vector<std::string> notices{};

    bool operator==(const USBScanResult&) const = default;
};

} // namespace korvane
