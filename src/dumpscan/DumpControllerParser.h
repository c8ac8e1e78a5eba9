#pragma once

#include "dumpscan/DumpLines.h"
#include "ids/IDsNameResolver.h"
#include "records/USBControllerMap.h"

#include <string_view>
#include <vector>

namespace korvane {

// The controllers of a saved dump's text, line by line, without building a
// tree: xHCI driver nodes that carry their own vendor and device IDs (with
// their ports), then xHCI-class PCI nodes of IDs not seen yet (without ports).
// A matched node's whole block is passed over, so nodes below it are never
// looked at. Sorted by vendor, device, location and name. Never fails.
std::vector<USBControllerMap> parseControllers(std::string_view text, IDsNameResolver& names);

// The PCI pass alone: the controllers to add to `existing`.
std::vector<USBControllerMap> parsePCIUSBControllers(std::string_view text,
                                                     const std::vector<USBControllerMap>& existing,
                                                     IDsNameResolver& names);
std::vector<USBControllerMap> parsePCIUSBControllers(const DumpLines& lines,
                                                     const std::vector<USBControllerMap>& existing,
                                                     IDsNameResolver& names);

} // namespace korvane
