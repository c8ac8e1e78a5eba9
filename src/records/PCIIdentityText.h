#pragma once

#include <cstdint>
#include <string>

namespace korvane {

// The texts a PCI vendor and device ID pair is written as, each ID in
// lower-case hex of at least four digits (wider values in full).

// "8086:a36d": the pair in stable IDs, keys and caches.
std::string vendorDeviceText(std::int64_t vendorID, std::int64_t deviceID);

// "pci8086,a36d": the IONameMatch of a PCI device.
std::string pciNameMatch(std::int64_t vendorID, std::int64_t deviceID);

} // namespace korvane
