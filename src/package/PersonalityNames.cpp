#include "package/PersonalityNames.h"

#include "base/Text.h"
#include "records/PCIIdentityText.h"

#include <algorithm>
#include <cinttypes>
#include <cstdio>
#include <unicode/uchar.h>
#include <unicode/utf8.h>

namespace korvane {

namespace {

bool isKeptScalar(UChar32 c) {
    constexpr std::uint32_t lettersMarksDigits = U_GC_L_MASK | U_GC_M_MASK | U_GC_N_MASK;
    return c == '-' || c == '_' || (U_GET_GC_MASK(c) & lettersMarksDigits) != 0;
}

} // namespace

std::string usbXHCIClassName(const USBControllerMap& controller) {
    std::string ownClass = trimmed(controller.providerClass);
    if (ownClass.find("USBXHCI") != std::string::npos) {
        return ownClass;
    }
    if (controller.vendorID == 0x8086) {
        // 8cxx/8dxx (Lynx Point) and 9cxx/9dxx (the mobile PCHs from Lynx
        // Point-LP to Sunrise Point-LP) are the ranges the platform serves
        // with its LPT class; it serves every other Intel xHCI with SPT.
        if (((controller.deviceID | 0x1000) >> 9) == 78) {
            return "AppleUSBXHCILPTH";
        }
        return "AppleUSBXHCISPT";
    }
    return "AppleUSBXHCIPCI";
}

std::string sanitizePersonalityName(std::string_view text) {
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.data());
    const auto length = static_cast<std::int32_t>(std::min<std::size_t>(text.size(), INT32_MAX));
    std::string result;
    result.reserve(text.size());
    std::int32_t i = 0;
    while (i < length) {
        const std::int32_t start = i;
        UChar32 c;
        U8_NEXT(bytes, i, length, c);
        if (c >= 0 && isKeptScalar(c)) {
            result.append(text.substr(static_cast<std::size_t>(start), static_cast<std::size_t>(i - start)));
        } else {
            result.push_back('_');
        }
    }
    return result;
}

std::string vendorWord(std::int64_t vendorID) {
    switch (vendorID) {
    case 0x1002:
    case 0x1022:
        return "AMD";
    case 0x1106:
        return "VIA";
    case 0x1912:
        return "Renesas";
    case 0x1b21:
        return "ASMedia";
    case 0x1b73:
        return "FrescoLogic";
    case 0x8086:
        return "Intel";
    default: {
        char text[32];
        std::snprintf(text, sizeof text, "Vendor%04" PRIX64, static_cast<std::uint64_t>(vendorID));
        return text;
    }
    }
}

bool hasPCIIdentity(const USBControllerMap& controller) {
    return controller.vendorID >= 1 && controller.deviceID >= 1;
}

std::string primaryMatch(const USBControllerMap& controller) {
    return pairText("0x%04" PRIx64 "%04" PRIx64, controller.deviceID, controller.vendorID);
}

std::string supportPersonalityName(const USBControllerMap& controller) {
    return usbXHCIClassName(controller) + " " + sanitizePersonalityName(vendorWord(controller.vendorID)) +
           pairText("_%04" PRIX64 "_%04" PRIX64, controller.vendorID, controller.deviceID);
}

std::string supportPersonalityModel(const USBControllerMap& controller) {
    if (!controller.usbDeviceName.empty()) {
        return controller.usbDeviceName;
    }
    return upperVendorDeviceText(controller.vendorID, controller.deviceID);
}

std::string mergePersonalityName(const USBControllerMap& controller, std::string_view machineModel) {
    const std::string name = controller.name.empty() ? pairText("USB_%04" PRIx64 "_%04" PRIx64,
                                                                controller.vendorID, controller.deviceID)
                                                     : controller.name;
    return std::string(machineModel) + "-" + name;
}

} // namespace korvane
