// The session's side of the model: sockets' nicknames, what was seen in
// each port, and map files (open, save, import of an existing package).

#include "collector/CollectorModel.h"
#include "mapfile/MapFileCodec.h"
#include "mapfile/MapMatching.h"
#include "mapfile/PortMapPackage.h"
#include "records/CollectorError.h"
#include "records/MacModel.h"
#include "records/Text.h"

namespace korvane {

namespace fs = std::filesystem;

namespace {

MapOutcome refused(const fs::path& file, const std::string& reason) {
    return {false, file.string() + " " + reason + ". Nothing was changed.", {}};
}

// One line of a nickname: the row and the table have room for no more.
std::string singleLine(const std::string& text) {
    std::string line = trimmed(text);
    for (char& c : line) {
        if (c == '\n' || c == '\r' || c == '\t') {
            c = ' ';
        }
    }
    return line;
}

// The name a path is shown by: its last part, also for "Korvane.kext/".
std::string shownName(const fs::path& file) {
    return (file.has_filename() ? file.filename() : file.parent_path().filename()).string();
}

} // namespace

CollectorModel::SessionContent CollectorModel::sessionContent() const {
    SessionContent content{selectedPortIDs_, connectorOverrides_, portNicknames_, {}, chosenTargetModel()};
    for (const auto& [key, discovery] : portDiscoveries_) {
        content.seenDevices[key] = discovery.deviceName;
    }
    return content;
}

bool CollectorModel::hasUnsavedChanges() const {
    SessionContent content = sessionContent();
    if (!mapFileURL_) {
        // Without a map file the choice is the user's setting, kept anyway.
        content.targetModel = savedContent_.targetModel;
    }
    return content != savedContent_;
}

MapOutcome CollectorModel::tell(MapOutcome outcome) {
    lastMapOutcome_ = outcome;
    changed();
    return outcome;
}

std::optional<std::string> CollectorModel::chosenTargetModel() const {
    return targetModelChoice_.empty() ? std::nullopt : std::optional<std::string>(targetModelChoice_);
}

void CollectorModel::setNickname(const USBControllerMap& controller, const USBPortMap& port,
                                 const std::string& nickname) {
    const auto key = usbPortStableID(controller, port);
    const std::string line = singleLine(nickname);
    if (line.empty()) {
        portNicknames_.erase(key);
    } else {
        portNicknames_[key] = line;
    }
    changed();
}

std::string CollectorModel::nicknameFor(const USBControllerMap& controller, const USBPortMap& port) const {
    const auto it = portNicknames_.find(usbPortStableID(controller, port));
    return it != portNicknames_.end() ? it->second : std::string();
}

std::string CollectorModel::seenTextFor(const USBControllerMap& controller, const USBPortMap& port) const {
    const auto it = portDiscoveries_.find(usbPortStableID(controller, port));
    return it != portDiscoveries_.end() ? seenText(it->second, environment_.now()) : std::string();
}

std::string CollectorModel::deviceTextFor(const USBControllerMap& controller, const USBPortMap& port) const {
    if (!port.activeDevice.empty()) {
        return port.activeDevice;
    }
    const std::string seen = seenTextFor(controller, port);
    return seen.empty() ? "No active device" : seen;
}

USBMapFile CollectorModel::currentMap() const {
    USBMapFile map;
    for (const auto& controller : scannedControllers_) {
        USBControllerMap identity = controller;
        identity.ports.clear();
        map.machineControllers.push_back(std::move(identity));
    }
    map.targetModel = chosenTargetModel();
    map.selectedPortIDs = selectedPortIDs_;
    map.connectorOverrides = connectorOverrides_;
    map.nicknames = portNicknames_;
    map.discoveries = portDiscoveries_;
    return map;
}

MapOutcome CollectorModel::openMap(const fs::path& file) {
    // A Reset Ports that ends after this would put its own choices over the map's.
    if (isScanningUSB_) {
        return tell(refused(file, "can't be opened while a scan is under way"));
    }
    const MapFileParse parse = readMapFile(file);
    if (!parse.map) {
        return tell(refused(file, parse.reason));
    }
    const USBMapFile& map = *parse.map;
    const MapScanMatch match = matchMapToScan(map, scannedControllers_);

    const auto counts = previousCounts();
    selectedPortIDs_ = map.selectedPortIDs;
    connectorOverrides_ = map.connectorOverrides;
    sameTypeForCompanionPortIDs_.clear(); // the map holds no such links
    portNicknames_ = map.nicknames;
    // Sightings are facts, not choices: what this session saw later stays.
    for (const auto& [key, discovery] : map.discoveries) {
        auto [it, isNew] = portDiscoveries_.try_emplace(key, discovery);
        if (!isNew && it->second.lastSeen < discovery.lastSeen) {
            it->second = discovery;
        }
    }
    // A map saved without a model leaves the user's choice as it is.
    if (map.targetModel) {
        targetModelChoice_ = trimmed(*map.targetModel);
    }
    mapFileURL_ = file;
    savedContent_ = {map.selectedPortIDs, map.connectorOverrides, map.nicknames, {}, chosenTargetModel()};
    for (const auto& [key, discovery] : map.discoveries) {
        savedContent_.seenDevices[key] = discovery.deviceName;
    }
    warnIfAnyControllerReachedPortLimit(counts);

    const std::string summary = portMatchSummary(match.matchedKeys.size(), map.portKeys().size(), "key");
    MapOutcome outcome{true, "Opened " + shownName(file) + ": " + summary + ".", {}};
    append("Map opened: " + file.string() + " (" + summary + ")");
    for (const auto& key : match.missingKeys) {
        std::string line = key;
        if (const auto nickname = map.nicknames.find(key); nickname != map.nicknames.end()) {
            line += " \"" + nickname->second + "\"";
        }
        if (const auto seen = map.discoveries.find(key); seen != map.discoveries.end()) {
            line += " (" + seenText(seen->second, environment_.now()) + ")";
        }
        append("Not on this machine, kept in the map: " + line);
        outcome.details.push_back(std::move(line));
    }
    return tell(std::move(outcome));
}

MapOutcome CollectorModel::saveMap(const fs::path& file) {
    try {
        writeMapFile(file, currentMap());
    } catch (...) {
        return tell({false,
                     "Could not save the map to " + file.string() + ": " +
                         errorDescription(std::current_exception()) + ".",
                     {}});
    }
    mapFileURL_ = file;
    savedContent_ = sessionContent();
    append("Map saved: " + file.string());
    return tell({true, "Saved " + shownName(file) + ".", {}});
}

MapOutcome CollectorModel::importPackage(const fs::path& package) {
    if (isScanningUSB_) {
        return tell(refused(package, "can't be imported while a scan is under way"));
    }
    const PortMapPackageParse parse = readPortMapPackage(package);
    if (!parse.package) {
        return tell(refused(package, parse.reason));
    }
    const PackageScanMatch match = matchPackageToScan(*parse.package, scannedControllers_);
    const std::size_t total = parse.package->ports.size();
    const std::string summary = portMatchSummary(match.matchedPorts, total, "port");
    if (match.matchedPorts == 0) {
        // Taking it would only uncheck everything.
        return tell({false,
                     "None of the " + std::to_string(total) + " ports of " + package.string() +
                         " is on this machine. Nothing was changed.",
                     match.unmatched});
    }

    const auto counts = previousCounts();
    selectedPortIDs_ = match.selectedPortIDs;
    for (const auto& [key, code] : match.connectors) {
        connectorOverrides_[key] = code;
    }
    // "Mac" is what a package made without a model says; it applies nowhere.
    if (parse.package->model && *parse.package->model != fallbackMacModel) {
        targetModelChoice_ = trimmed(*parse.package->model);
    }
    warnIfAnyControllerReachedPortLimit(counts);
    append("Package imported: " + package.string() + " (" + summary + ")");
    for (const auto& line : match.unmatched) {
        append("Not matched: " + line);
    }
    return tell({true, "Imported " + shownName(package) + ": " + summary + ".", match.unmatched});
}

} // namespace korvane
