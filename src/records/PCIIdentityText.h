#pragma once

#include <cstdint>
#include <string>

namespace korvane {

// The texts a PCI vendor and device ID pair is written as, each ID in
// lower-case hex of at least four digits (wider values in full).

// The two IDs through a printf `format` taking two uint64_t, such as
// "%04" PRIx64 ":%04" PRIx64, for the texts below and the package's names.
std::string pairText(const char* format, std::int64_t first, std::int64_t second);

// "8086:a36d": the pair in stable IDs, keys and caches.
std::string vendorDeviceText(std::int64_t vendorID, std::int64_t deviceID);

// "8086:A36D": the pair as people read it, in tables, titles and notes.
std::string upperVendorDeviceText(std::int64_t vendorID, std::int64_t deviceID);

// "pci8086,a36d": the IONameMatch of a PCI device.
std::string pciNameMatch(std::int64_t vendorID, std::int64_t deviceID);

} // namespace korvane
