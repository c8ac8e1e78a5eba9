#include "records/PortPlace.h"

#include <algorithm>
#include <initializer_list>

namespace korvane {

namespace {

std::string knownWord(std::string_view word, std::initializer_list<std::string_view> words) {
    return std::find(words.begin(), words.end(), word) != words.end() ? std::string(word) : std::string();
}

} // namespace

PortPlace portPlaceFromWords(std::string_view panel, std::string_view verticalPosition,
                             std::string_view horizontalPosition, bool isOnDock, bool isInLid) {
    return {knownWord(panel, {"top", "bottom", "left", "right", "front", "back", "unknown"}),
            knownWord(verticalPosition, {"upper", "center", "lower"}),
            knownWord(horizontalPosition, {"left", "center", "right"}), isOnDock, isInLid};
}

std::string portPlaceText(const PortPlace& place) {
    std::string text;
    auto add = [&text](std::string_view part) {
        if (!text.empty()) {
            text += ", ";
        }
        text += part;
    };
    if (!place.panel.empty() && place.panel != "unknown") {
        add(place.panel + " panel");
        std::string position;
        if (place.verticalPosition == "upper" || place.verticalPosition == "lower") {
            position = place.verticalPosition;
        }
        if (place.horizontalPosition == "left" || place.horizontalPosition == "right") {
            position += (position.empty() ? "" : " ") + place.horizontalPosition;
        }
        if (position.empty() && place.verticalPosition == "center" && place.horizontalPosition == "center") {
            position = "center";
        }
        if (!position.empty()) {
            add(position);
        }
    }
    if (place.isInLid) {
        add("in the lid");
    }
    if (place.isOnDock) {
        add("on the dock");
    }
    return text;
}

} // namespace korvane
