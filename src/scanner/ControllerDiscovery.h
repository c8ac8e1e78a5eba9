#pragma once

#include "scanner/NativeUSBNode.h"
#include "scanner/PropertyValue.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace korvane {

// How the scanner tells an xHCI controller in a registry tree: a PCI device of
// the xHCI class, and a USB host service somewhere below it. All functions are
// pure and never throw.

struct PCIIdentity {
    std::int64_t vendorID = 0;
    std::int64_t deviceID = 0;

    bool operator==(const PCIIdentity&) const = default;
};

// A USB host controller service: "USBXHCI" in the class name or in one of the
// driver-matching properties.
bool isAppleXHCIService(const NativeUSBNode& node);

// An IOPCIDevice whose class code is xHCI (0C 03 30), with or without the
// revision byte and in either byte order.
bool isUSBControllerPCIDevice(const NativeUSBNode& node);

// The node itself or its nearest ancestor that is such a PCI device.
const NativeUSBNode* nearestUSBControllerPCIDevice(const NativeUSBNode& node);

// The node's name, location, class and identity-bearing properties, blank-joined.
std::string pciIdentitySearchText(const NativeUSBNode& node);

// "pciVVVV,DDDD" first, then "VVVV:DDDD" / "VVVV_DDDD"; only the first match
// of each expression counts, and zero halves don't.
std::optional<PCIIdentity> parsePCIIdentity(std::string_view text);

// vendor-id/device-id when both are at least 1, else what the search text gives.
std::optional<PCIIdentity> pciIdentity(const NativeUSBNode& pciNode);

} // namespace korvane
