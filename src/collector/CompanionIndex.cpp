#include "collector/CompanionIndex.h"

#include <set>

namespace korvane {

CompanionIndex::CompanionIndex(const std::vector<USBControllerMap>& controllers) {
    // Only the keys some port names: most ports are nobody's companion.
    std::set<std::string> named;
    for (const auto& controller : controllers) {
        for (const auto& port : controller.ports) {
            if (!port.companionKey.empty()) {
                named.insert(port.companionKey);
            }
        }
    }
    for (const auto& controller : controllers) {
        for (const auto& port : controller.ports) {
            if (auto key = usbPortStableID(controller, port); named.contains(key)) {
                byKey_.emplace(std::move(key), ScannedPort{&controller, &port});
            }
        }
    }
}

std::optional<ScannedPort> CompanionIndex::companionOf(const USBPortMap& port) const {
    if (port.companionKey.empty()) {
        return std::nullopt;
    }
    const auto found = byKey_.find(port.companionKey);
    return found == byKey_.end() ? std::nullopt : std::optional(found->second);
}

std::string CompanionIndex::companionName(const USBControllerMap& controller, const USBPortMap& port) const {
    const auto companion = companionOf(port);
    if (!companion) {
        return "";
    }
    if (companion->controller->stableID() == controller.stableID()) {
        return companion->port->name;
    }
    return companion->controller->displayName() + " " + companion->port->name;
}

} // namespace korvane
