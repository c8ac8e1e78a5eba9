#pragma once

#include "records/USBControllerMap.h"
#include "scanner/NodeProperties.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace korvane {

// The two halves of a USB 3 connector, a USB 2 port and a SuperSpeed port,
// as the registry pairs them. macOS puts a UsbCompanionSS, UsbCompanionSSP or
// UsbCompanionHS dictionary on a port (the other half's port number and, when
// it sits on another controller, that controller's name: a Thunderbolt
// controller's USB 2 lines run to the chipset's HS ports). The Linux source
// records the kernel's `peer` link, which stays on one controller.

// What one port says of its other half.
struct CompanionReference {
    std::string controllerName;  // empty: the port's own controller
    std::int64_t portNumber = 0; // above 0 when the other half is told by number
    std::string portName;        // else by name, upper-cased
};

// The reference in a port node's (or ports-table entry's) properties, if any.
std::optional<CompanionReference> companionReference(const NodeProperties& properties);

// Sets each port's companionKey. `references[i]` holds, by port name, what the
// ports of `controllers[i]` said. A controller name that several controllers
// share is resolved to the one whose port points back, else the first; a
// reference to a port that isn't there leaves the key empty. A port that
// names no companion while another port names it gets that port.
void assignCompanionKeys(std::vector<USBControllerMap>& controllers,
                         const std::vector<std::map<std::string, CompanionReference>>& references);

} // namespace korvane
