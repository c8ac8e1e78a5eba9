#pragma once

#include <string>
#include <string_view>

namespace korvane {

// Where on the machine a port's socket is, as the firmware's _PLD tells it
// and Linux shows it in the port's physical_location folder. Each text is one
// of the kernel's words for it, or empty.
struct PortPlace {
    std::string panel;              // top, bottom, left, right, front, back or unknown
    std::string verticalPosition;   // upper, center or lower
    std::string horizontalPosition; // left, center or right
    bool isOnDock = false;
    bool isInLid = false;

    bool operator==(const PortPlace&) const = default;
};

// A place from the kernel's words; a word outside the kernel's vocabulary
// for its field is dropped, so a saved tree can't smuggle odd text in.
PortPlace portPlaceFromWords(std::string_view panel, std::string_view verticalPosition,
                             std::string_view horizontalPosition, bool isOnDock, bool isInLid);

// What a person reads beside the port: "back panel, left", "front panel,
// upper right", "top panel, lower left, in the lid". A position on an unknown
// panel tells nobody anything, so such a place reads "" unless it is on the
// dock or in the lid.
std::string portPlaceText(const PortPlace& place);

} // namespace korvane
