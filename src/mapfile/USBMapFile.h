#pragma once

#include "mapfile/MappingSession.h"
#include "records/USBControllerMap.h"

#include <set>
#include <string>
#include <vector>

namespace korvane {

// A mapping session as a map file holds it, with the machine it was made on.
struct USBMapFile {
    // The version this program writes and the newest it reads.
    static constexpr int currentFormatVersion = 1;

    // The machine the map was made on: its controllers' identities as the
    // scan gave them (no ports).
    std::vector<USBControllerMap> machineControllers;
    MappingSession session;

    // Every port key the map says something about.
    std::set<std::string> portKeys() const;

    bool operator==(const USBMapFile&) const = default;
};

} // namespace korvane
