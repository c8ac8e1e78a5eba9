#include "records/PCIIdentityText.h"

#include <cinttypes>
#include <cstdio>

namespace korvane {

std::string pairText(const char* format, std::int64_t first, std::int64_t second) {
    char text[64];
    std::snprintf(text, sizeof text, format, static_cast<std::uint64_t>(first),
                  static_cast<std::uint64_t>(second));
    return text;
}

std::string vendorDeviceText(std::int64_t vendorID, std::int64_t deviceID) {
    return pairText("%04" PRIx64 ":%04" PRIx64, vendorID, deviceID);
}

std::string upperVendorDeviceText(std::int64_t vendorID, std::int64_t deviceID) {
    return pairText("%04" PRIX64 ":%04" PRIX64, vendorID, deviceID);
}

std::string pciNameMatch(std::int64_t vendorID, std::int64_t deviceID) {
    return pairText("pci%04" PRIx64 ",%04" PRIx64, vendorID, deviceID);
}

} // namespace korvane
