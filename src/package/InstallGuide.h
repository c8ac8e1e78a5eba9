#pragma once

#include "package/ScanSource.h"
#include "records/USBControllerMap.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace korvane {

inline constexpr std::string_view installGuideFileName = "INSTALL.txt";

// A kept port as the person installing the map needs to know it.
struct InstallGuidePort {
    std::string nickname{};
    // "SS01", or "XHC2 HS05" on another controller; empty without one.
    std::string companion{};
    bool isCompanionKept = false;
    // The device in it now, else the last one seen there ("SanDisk Ultra,
    // 14:03"); empty when nothing was seen.
    std::string lastDevice{};
};

struct InstallGuideController {
    // The controller as the package writer gets it: kept ports only, each
    // with the connector the map writes and where that code came from.
    USBControllerMap controller;
    // One entry per port of `controller`, in the same order.
    std::vector<InstallGuidePort> ports{};
    // How many ports macOS uses on this controller, when it limits them.
    std::optional<std::int64_t> portBudget{};
};

struct InstallGuide {
    std::string targetModel;
    // Where the model came from, one clause ("your choice", ...).
    std::string targetModelOrigin;
    // False for the stand-in model that names no Mac.
    bool isTargetModelAMac = true;
    ScanSource source{};
    std::vector<InstallGuideController> controllers{};
};

// INSTALL.txt: what the ZIP holds, what the map says port by port, and how to
// install it and change it later, for the person who puts it to use. Ends in
// one line feed.
std::string installGuideText(const InstallGuide& guide);

} // namespace korvane
