#pragma once

#include "records/USBControllerMap.h"
#include "tools/PropertyList.h"

#include <string_view>
#include <vector>

namespace korvane {

// The whole Info.plist tree of Korvane.kext for these controllers: the bundle
// keys and, in IOKitPersonalities, one support personality per PCI ID and one
// merge personality per controller that has ports to write (its own or its
// template's), named as mergePersonalitySlots() says. Controllers with a vendor or device ID below 1 get
// neither. `machineModel` names the merge personalities and fills their model key. Never fails.
PlistPtr makeKextInfoPlist(const std::vector<USBControllerMap>& controllers, std::string_view machineModel);

} // namespace korvane
