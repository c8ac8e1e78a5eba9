#pragma once

#include "records/USBControllerMap.h"

#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

namespace korvane {

// A port of the scan with its controller; both live in the scanned list.
struct ScannedPort {
    const USBControllerMap* controller = nullptr;
    const USBPortMap* port = nullptr;
};

// Companion ports: the other half of a port's connector, found by the
// companionKey the scan gave it. Points into the controllers it was made
// from: make it again whenever they are replaced.
class CompanionIndex {
  public:
    CompanionIndex() = default;
    explicit CompanionIndex(const std::vector<USBControllerMap>& controllers);

    // None without a companion key, or when no scanned port has it.
    std::optional<ScannedPort> companionOf(const USBPortMap& port) const;
    // "SS01" for a companion on the same controller, "XHC1 HS05" for one on
    // another; empty without a companion in the scan.
    std::string companionName(const USBControllerMap& controller, const USBPortMap& port) const;

  private:
    std::unordered_map<std::string, ScannedPort> byKey_;
};

} // namespace korvane
