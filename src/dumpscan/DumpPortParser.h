#pragma once

#include "dumpscan/DumpLines.h"
#include "records/USBPortMap.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace korvane {

// The ports in one controller's block of a saved dump: every port line deeper
// than the controller (hub ports with port names too), the first line of each
// name winning, numbered from their "port" property, their location or their
// name, and sorted by number, then name. Never fails.
std::vector<USBPortMap> parsePorts(const std::vector<std::string_view>& lines, std::int64_t controllerDepth);

// The same over lines [begin, end) of an indexed dump, the controller's block.
std::vector<USBPortMap> parsePorts(const DumpLines& lines, std::size_t begin, std::size_t end,
                                   std::int64_t controllerDepth);

// The first node name below a port's own line in its whole block whose class
// isn't a port class; else "Bluetooth" if the block mentions it; else "".
std::string activeDeviceName(std::string_view full);

// 255 (internal) when the block mentions Bluetooth, MYSTIC LIGHT or Internal or
// the name begins with USR; else 3.
std::int64_t inferredConnector(std::string_view name, std::string_view context);

} // namespace korvane
