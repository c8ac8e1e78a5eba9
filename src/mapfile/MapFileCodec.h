#pragma once

#include "mapfile/USBMapFile.h"

#include <filesystem>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>

namespace korvane {

// Map files: one JSON document with a format marker and version, the
// machine's controllers, the target model, and per port key whether it is
// checked, its connector, nickname, note and the last device seen in it.

enum class MapFileProblem { none, notAMap, newerFormat, damaged, unreadable };

// What reading a map gave: the map, or what is wrong with it, worded to
// follow the file's name ("is not a KorvaneGenerator port map").
struct MapFileParse {
    std::optional<USBMapFile> map;
    MapFileProblem problem = MapFileProblem::none;
    std::string reason;
};

// A map file is small; anything near this is not one.
inline constexpr std::size_t maximumMapFileBytes = std::size_t{8} * 1024 * 1024;

// Strict: a document that isn't a map, a newer format or any field of the
// wrong kind gives no map at all, never part of one. Never throws.
MapFileParse parseMapFile(std::string_view bytes);

// The map as the text of a map file, in the current format.
std::string mapFileText(const USBMapFile& map);

// A controller's identity as map files and `--json` write it: name,
// location, vendorID, deviceID, ioNameMatch, providerClass, usbDeviceName.
nlohmann::json controllerIdentityJSON(const USBControllerMap& controller);

// A sighting as map files and `--json` write it: device and lastSeen (UTC).
nlohmann::json sightingJSON(const PortSighting& sighting);

// Reads and parses the file; a file that can't be read, isn't a regular file
// or is far too large is refused as unreadable. Never throws.
MapFileParse readMapFile(const std::filesystem::path& path);

// Writes mapFileText(map) atomically. Throws std::system_error with the
// platform's wording.
void writeMapFile(const std::filesystem::path& path, const USBMapFile& map);

} // namespace korvane
