#pragma once

#include "collector/CollectorModel.h"

#include <filesystem>
#include <iosfwd>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace korvane {

// A mapping session on the command line: a map to start from, a package
// whose port map to take, names for sockets, and where to save the result.
struct MapOptions {
    std::optional<std::filesystem::path> map;
    std::optional<std::filesystem::path> importKext;
    std::vector<std::string> nicknames; // KEY=TEXT
    std::optional<std::filesystem::path> saveMap;
};

// The controller and port of a key of the current scan. Throws UsageError
// naming `option` when no port has it.
std::pair<USBControllerMap, USBPortMap> portWithKey(const CollectorModel& model, const std::string& key,
                                                    const std::string& option);

// Opens the map, imports the package and sets the nicknames, in that order,
// on a scanned model. Returns one line per thing that didn't match this
// machine. Throws UsageError for a file the model refused, a bad
// --nickname, or a --save-map file that exists and isn't the --map file.
std::vector<std::string> applyMapOptions(CollectorModel& model, const MapOptions& options);

// Saves the session when --save-map asked for it; false, after saying why
// on `err`, when that failed.
bool saveMapIfAsked(CollectorModel& model, const MapOptions& options, std::ostream& err);

} // namespace korvane
