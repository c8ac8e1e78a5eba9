#pragma once

#include "records/USBControllerMap.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace korvane {

// The ports that the package and the report write for one controller: its own
// when it has any, else its template's; in both cases ascending by port
// number with a stable sort, an empty port data counting as 0.
struct PortsToWrite {
    std::vector<USBPortMap> ports;
    // The template's count when the ports came from a template.
    std::optional<std::uint32_t> templateCount;

    bool isFromTemplate() const { return templateCount.has_value(); }
};

PortsToWrite portsToWrite(const USBControllerMap& controller);

} // namespace korvane
