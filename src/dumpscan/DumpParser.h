#pragma once

#include "dumpscan/DumpText.h"
#include "ids/IDsNameResolver.h"
#include "records/USBControllerMap.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace korvane {

// The controllers of a saved dump's text, line by line, without building a
// tree: xHCI driver nodes that carry their own vendor and device IDs (with
// their ports), then xHCI-class PCI nodes of IDs not seen yet (without ports).
// A matched node's whole block is passed over, so nodes below it are never
// looked at. In the order every scanner uses (sortControllersByIDsThenLocation()).
// Never fails.
std::vector<USBControllerMap> parseControllers(std::string_view text, IDsNameResolver& names);

// The ports in lines [begin, end) of an indexed dump, one controller's block:
// every port line deeper than the controller (hub ports with port names too),
// the first line of each name winning, numbered from their "port" property,
// their location or their name, and sorted by number, then name. Never fails.
std::vector<USBPortMap> parsePorts(const DumpLines& lines, std::size_t begin, std::size_t end,
                                   std::int64_t controllerDepth);

// The first node name below a port's own line in its whole block whose class
// isn't a port class; else "Bluetooth" if the block mentions it; else "".
std::string activeDeviceName(std::string_view full);

// The connector of a port line that states none, from its whole block's text:
// 255 (internal) when the block mentions Bluetooth, MYSTIC LIGHT or Internal or
// the name begins with USR; else 3.
std::int64_t inferredConnectorFromDumpBlock(std::string_view name, std::string_view blockText);

} // namespace korvane
