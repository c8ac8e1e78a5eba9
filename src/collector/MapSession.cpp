// The session's side of the model: sockets' nicknames, what was seen in
// each port, and map files (open, save, import of an existing package).

#include "base/Text.h"
#include "collector/CollectorModel.h"
#include "mapfile/MapFileCodec.h"
#include "mapfile/MapMatching.h"
#include "mapfile/PortMapPackage.h"
#include "records/CollectorError.h"
#include "records/MacModel.h"

#include <map>

namespace korvane {

namespace fs = std::filesystem;

namespace {

// What of one controller of a map or package landed on this machine.
std::string controllerMatchText(std::size_t matched, std::size_t total) {
    return matched == 0 ? std::string("not on this machine")
                        : std::to_string(matched) + " of " + std::to_string(total) + " ports matched";
}

MapOutcome refused(const fs::path& file, const std::string& reason) {
    return {false, file.string() + " " + reason + ". Nothing was changed.", {}};
}

// The name a path is shown by: its last part, also for "Korvane.kext/".
std::string shownName(const fs::path& file) {
    return (file.has_filename() ? file.filename() : file.parent_path().filename()).string();
}

} // namespace

const SessionPort& CollectorModel::portSession(const USBControllerMap& controller,
                                               const USBPortMap& port) const {
    return session_.port(usbPortStableID(controller, port));
}

std::map<std::string, std::int64_t> CollectorModel::connectorOverrides() const {
    std::map<std::string, std::int64_t> overrides;
    for (const auto& [key, port] : session_.ports()) {
        if (port.connector) {
            overrides.emplace_hint(overrides.end(), key, *port.connector);
        }
    }
    return overrides;
}

std::map<std::string, std::string> CollectorModel::portNicknames() const {
    std::map<std::string, std::string> nicknames;
    for (const auto& [key, port] : session_.ports()) {
        if (!port.nickname.empty()) {
            nicknames.emplace_hint(nicknames.end(), key, port.nickname);
        }
    }
    return nicknames;
}

std::map<std::string, PortSighting> CollectorModel::portSightings() const {
    std::map<std::string, PortSighting> sightings;
    for (const auto& [key, port] : session_.ports()) {
        if (port.sighting) {
            sightings.emplace_hint(sightings.end(), key, *port.sighting);
        }
    }
    return sightings;
}

bool CollectorModel::hasUnsavedChanges() const {
    MappingSession current = session_.comparable();
    if (!mapFileURL_) {
        // Without a map file the choice is the user's setting, kept anyway.
        current.targetModel = savedSession_.targetModel;
    }
    return current != savedSession_.comparable();
}

MapOutcome CollectorModel::tell(MapOutcome outcome) {
    lastMapOutcome_ = outcome;
    changed();
    return outcome;
}

void CollectorModel::editPort(const USBControllerMap& controller, const USBPortMap& port,
                              const std::function<void(SessionPort&)>& change) {
    session_.edit(usbPortStableID(controller, port), change);
    changed();
}

bool CollectorModel::setNickname(const USBControllerMap& controller, const USBPortMap& port,
                                 const std::string& nickname) {
    const std::string text = trimmed(nickname);
    if (portTextProblem(text)) {
        return false;
    }
    editPort(controller, port, [&text](SessionPort& entry) { entry.nickname = text; });
    return true;
}

std::string CollectorModel::nicknameFor(const USBControllerMap& controller, const USBPortMap& port) const {
    return portSession(controller, port).nickname;
}

std::string CollectorModel::seenTextFor(const USBControllerMap& controller, const USBPortMap& port) const {
    const auto& sighting = portSession(controller, port).sighting;
    return sighting ? seenText(*sighting, environment_.now()) : std::string();
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
    map.session = session_;
    return map;
}

// A file made for another Mac than the one shown: both models, since the
// file's now stands as the target model.
std::string CollectorModel::fileModelNote(std::string_view kind,
                                          const std::optional<std::string>& fileModel) const {
    const auto& own = targetModels_.machineModel();
    const auto model = fileModel ? targetModelChoiceOf(*fileModel) : std::nullopt;
    if (!model || *model == fallbackMacModel || !own || *model == *own) {
        return {};
    }
    const bool isRegistry = environment_.machineModelSource == TargetMacModel::Source::savedRegistry;
    return "The " + std::string(kind) + " was made for " + *model + ", and " +
           (isRegistry ? "this registry's own model is " : "this machine's own model is ") + *own + ".";
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
    MappingSession opened = map.session;
    // What this session saw later stays.
    opened.takeLaterSightings(session_);
    // A map saved without a model leaves the user's choice as it is.
    opened.targetModel =
        map.session.targetModel ? targetModelChoiceOf(*map.session.targetModel) : session_.targetModel;
    session_ = std::move(opened);
    sameTypeForCompanionPortIDs_.clear(); // the map holds no such links
    mapFileURL_ = file;
    savedSession_ = map.session;
    savedSession_.targetModel = session_.targetModel;
    warnIfAnyControllerReachedPortLimit(counts);

    const std::string summary = portMatchSummary(match.matchedKeys.size(), map.portKeys().size(), "key");
    MapOutcome outcome{true, "Opened " + shownName(file) + ": " + summary + ".", {}};
    append("Map opened: " + file.string() + " (" + summary + ")");
    if (const std::string note = fileModelNote("map", map.session.targetModel); !note.empty()) {
        append(note);
        outcome.summary += " " + note;
    }
    // Per controller of the map (a key's first three parts: PCI IDs, name,
    // location), whether this machine has it: a key matches only there.
    std::map<std::string, std::pair<std::size_t, std::size_t>> byController; // matched, total
    for (const auto& key : map.portKeys()) {
        std::size_t cut = 0;
        for (int bar = 0; bar < 3 && cut != std::string::npos; ++bar) {
            cut = key.find('|', cut == 0 ? 0 : cut + 1);
        }
        auto& [matched, total] = byController[key.substr(0, cut)];
        matched += match.matchedKeys.contains(key) ? 1 : 0;
        ++total;
    }
    if (byController.size() > 1 || match.matchedKeys.size() < map.portKeys().size()) {
        for (const auto& [controller, keys] : byController) {
            append("Map controller " + controller + ": " + controllerMatchText(keys.first, keys.second));
        }
    }
    for (const auto& key : match.missingKeys) {
        const SessionPort& entry = map.session.port(key);
        std::string line = key;
        if (!entry.nickname.empty()) {
            line += " \"" + entry.nickname + "\"";
        }
        if (entry.sighting) {
            line += " (" + seenText(*entry.sighting, environment_.now()) + ")";
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
    savedSession_ = session_;
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
    session_.selectOnly(match.selectedPortIDs);
    for (const auto& [key, code] : match.connectors) {
        session_.edit(key, [code = code](SessionPort& entry) { entry.connector = code; });
    }
    // "Mac" is what a package made without a model says; it applies nowhere.
    if (parse.package->model && *parse.package->model != fallbackMacModel) {
        session_.targetModel = targetModelChoiceOf(*parse.package->model);
    }
    warnIfAnyControllerReachedPortLimit(counts);
    append("Package imported: " + package.string() + " (" + summary + ")");
    if (match.byController.size() > 1 || match.matchedPorts < total) {
        for (const auto& [controller, ports] : match.byController) {
            append("Package controller " + controller + ": " +
                   controllerMatchText(ports.first, ports.second));
        }
    }
    for (const auto& line : match.unmatched) {
        append("Not matched: " + line);
    }
    std::string told = "Imported " + shownName(package) + ": " + summary + ".";
    if (const std::string note = fileModelNote("package", parse.package->model); !note.empty()) {
        append(note);
        told += " " + note;
    }
    return tell({true, std::move(told), match.unmatched});
}

} // namespace korvane
