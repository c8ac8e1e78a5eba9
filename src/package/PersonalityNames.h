#pragma once

#include "records/USBControllerMap.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace korvane {

// The names and match values that the package's personalities are built from.
// Pure functions of their arguments.

// The IOClass of a controller's support personality: its own host class when
// that is an xHCI class, else the platform driver class its vendor and device
// call for.
std::string usbXHCIClassName(const USBControllerMap& controller);

// Every Unicode scalar that is not a letter, mark or digit, "-" or "_" becomes
// one "_", so the length in scalars stays. Bytes that are not UTF-8 count as
// one scalar each.
std::string sanitizePersonalityName(std::string_view text);

// "Intel", "ASMedia", ... or "Vendor%04X" for a vendor without a word.
std::string vendorWord(std::int64_t vendorID);

// "0x%04x%04x" of device then vendor: the IOPCIPrimaryMatch of both families.
std::string primaryMatch(const USBControllerMap& controller);

// Whether the controller has the vendor and device IDs a personality matches
// on; one without gets no personality at all.
bool hasPCIIdentity(const USBControllerMap& controller);

// "{class} {vendor word}_%04X_%04X".
std::string supportPersonalityName(const USBControllerMap& controller);

// The support personality's model: the database name, or "%04X:%04X".
std::string supportPersonalityModel(const USBControllerMap& controller);

// "{machine model}-{name}", or "{machine model}-USB_%04x_%04x" without a name.
std::string mergePersonalityName(const USBControllerMap& controller, std::string_view machineModel);

} // namespace korvane
