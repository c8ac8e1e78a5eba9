#pragma once

#include <chrono>
#include <string>

namespace korvane {

// The last device seen in a port: its name as the scan gave it, and when.
// Kept after the device is gone, so plugging one device into every socket
// in turn names every socket used.
struct PortSighting {
    std::string deviceName;
    std::chrono::system_clock::time_point lastSeen;

    bool operator==(const PortSighting&) const = default;
};

// "seen: SanDisk Ultra, 14:03" in local time; a sighting of another day
// carries its day ("21 Nov 14:03"), of another year its date
// ("2025-11-21 14:03").
std::string seenText(const PortSighting& sighting, std::chrono::system_clock::time_point now);

// "2026-11-22T13:03:09Z": a sighting's time in UTC to the second, as map
// files and `--json` write it.
std::string utcTimeText(std::chrono::system_clock::time_point when);

} // namespace korvane
