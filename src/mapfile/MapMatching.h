#pragma once

#include "mapfile/PortMapPackage.h"
#include "mapfile/USBMapFile.h"

#include <cstddef>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace korvane {

// How a saved map or an imported package meets the ports of this scan.

struct MapScanMatch {
    std::set<std::string> matchedKeys;
    // The map's keys no scanned port has, in key order. They stay in the
    // session (and in the next save), as stale keys do after a rescan.
    std::vector<std::string> missingKeys;
};

MapScanMatch matchMapToScan(const USBMapFile& map, const std::vector<USBControllerMap>& scanned);

struct PackageScanMatch {
    // The scanned ports the package's ports land on, and the connectors it
    // gives them.
    std::set<std::string> selectedPortIDs;
    std::map<std::string, std::int64_t> connectors;
    std::size_t matchedPorts = 0;
    // One line per package port that lands nowhere, saying why.
    std::vector<std::string> unmatched;
    // Per controller the package names (its first IONameMatch, and the PCI
    // IDs it matches when given): how many of its ports landed, of how many.
    std::map<std::string, std::pair<std::size_t, std::size_t>> byController;
};

// A package port lands on every scanned port whose controller's name is one
// of its IONameMatch names, whose PCI IDs its IOPCIPrimaryMatch (when given)
// takes, as it would on the Mac, and whose number is the port's number.
PackageScanMatch matchPackageToScan(const PortMapPackage& package,
                                    const std::vector<USBControllerMap>& scanned);

// "12 of 14 ports matched; 2 keys not on this machine", or "14 of 14 ports
// matched". `missing` names what didn't match ("key", "port").
std::string portMatchSummary(std::size_t matched, std::size_t total, std::string_view missing);

} // namespace korvane
