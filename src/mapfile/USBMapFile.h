#pragma once

#include "mapfile/PortDiscovery.h"
#include "records/USBControllerMap.h"

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace korvane {

// A mapping session as a map file holds it. Everything the user decided is
// keyed by port key (usbPortStableID), the one identity that survives a
// rescan, a reboot and, where names and numbers agree, the other system.
struct USBMapFile {
    // The version this program writes and the newest it reads.
    static constexpr int currentFormatVersion = 1;

    // The machine the map was made on: its controllers' identities as the
    // scan gave them (no ports).
    std::vector<USBControllerMap> machineControllers;
    // The Mac model the package is for; none when not chosen.
    std::optional<std::string> targetModel;
    std::set<std::string> selectedPortIDs;
    std::map<std::string, std::int64_t> connectorOverrides;
    std::map<std::string, std::string> nicknames;
    std::map<std::string, PortDiscovery> discoveries;

    // Every port key the map says something about.
    std::set<std::string> portKeys() const;

    bool operator==(const USBMapFile&) const = default;
};

} // namespace korvane
