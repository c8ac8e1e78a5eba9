// The port editor's side of the model: scans for editing, selection,
// connector choices and the port limit warning.

#include "base/Text.h"
#include "collector/CollectorModel.h"
#include "package/LegacyUSBPortTemplate.h"

#include <string_view>

namespace korvane {

void CollectorModel::scanUSBPorts() {
    startGuardedScan(true, false);
}

void CollectorModel::refreshActiveUSBDevices() {
    startGuardedScan(false, true);
}

void CollectorModel::startGuardedScan(bool isReset, bool silent) {
    if (isRunning_ || isScanningUSB_) {
        return;
    }
    isScanningUSB_ = true;
    changed();
    std::weak_ptr<CollectorModel> weak = weak_from_this();
    environment_.scheduler.runInBackground(Scheduler::Priority::userInitiated, [weak, isReset, silent] {
        if (auto model = weak.lock()) {
            model->runUSBScanForEditing(isReset, silent);
        }
    });
}

void CollectorModel::runUSBScanForEditing(bool isReset, bool silent) {
    if (!silent) {
        onMain([this] { append("Scanning USB controllers and ports for editing..."); });
    }

    USBScanResult scan = environment_.scanRegistry();
    std::vector<USBControllerMap> controllers = std::move(scan.controllers);
    for (auto& controller : controllers) {
        if (controller.ports.empty()) {
            controller.ports = legacyUSBPortTemplatePorts(controller);
        }
    }
    // Port key to the device in it, for every active port.
    std::map<std::string, std::string> activeDevices;
    for (const auto& controller : controllers) {
        for (const auto& port : controller.ports) {
            if (auto device = trimmed(port.activeDevice); !device.empty()) {
                activeDevices.emplace(usbPortStableID(controller, port), std::move(device));
            }
        }
    }

    const std::size_t controllerCount = controllers.size();
    const std::size_t activeCount = activeDevices.size();
    onMain([&] {
        // One stretch: no view may see the new controllers with the old selection.
        const auto counts = previousCounts();
        const auto seenAt = environment_.now();
        scannedControllers_ = std::move(controllers);
        scanNotices_ = std::move(scan.notices);
        companions_ = CompanionIndex(scannedControllers_);
        if (isReset) {
            session_.reset(activeDevices, seenAt);
            const auto pairs = checkCompanionsOfActivePorts(activeDevices, session_);
            sameTypeForCompanionPortIDs_.clear();
            if (!mapFileURL_) {
                // Without a map file, what a reset brings back is no work to lose.
                savedSession_.reset(activeDevices, seenAt);
                checkCompanionsOfActivePorts(activeDevices, savedSession_);
            }
            for (const auto& line : pairs) {
                append(line);
            }
        } else {
            session_.sawDevices(activeDevices, seenAt);
        }
        warnIfAnyControllerReachedPortLimit(counts);
        isScanningUSB_ = false;
        changed();
    });

    if (!silent) {
        onMain([&] {
            append("USB ports reset: " + std::to_string(controllerCount) + " controller(s), " +
                   std::to_string(activeCount) + " active USB port(s) selected automatically.");
        });
    }
}

// A device in one half of a socket says the socket is in use: its other
// half is checked too, or a device of the other speed would find it dead.
std::vector<std::string>
CollectorModel::checkCompanionsOfActivePorts(const std::map<std::string, std::string>& activeDevices,
                                             MappingSession& session) const {
    std::vector<std::string> lines;
    for (const auto& controller : scannedControllers_) {
        for (const auto& port : controller.ports) {
            if (!activeDevices.contains(usbPortStableID(controller, port))) {
                continue;
            }
            const auto companion = companions_.companionOf(port);
            if (!companion) {
                continue;
            }
            const auto companionKey = usbPortStableID(*companion->controller, *companion->port);
            if (activeDevices.contains(companionKey) || session.isSelected(companionKey)) {
                continue;
            }
            session.edit(companionKey, [](SessionPort& entry) { entry.selected = true; });
            lines.push_back(port.name + " has a device: its companion " +
                            companions_.companionName(controller, port) + " is checked too.");
        }
    }
    return lines;
}

std::vector<std::string> CollectorModel::portsKeptWithoutCompanion() const {
    std::vector<std::string> lines;
    for (const auto& controller : scannedControllers_) {
        for (const auto& port : controller.ports) {
            if (!isPortSelected(controller, port)) {
                continue;
            }
            const auto companion = companions_.companionOf(port);
            if (!companion || isPortSelected(*companion->controller, *companion->port)) {
                continue;
            }
            const bool isUSB2 = port.name.starts_with("HS");
            lines.push_back(port.name + " is kept without its " + (isUSB2 ? "USB 3" : "USB 2") + " half " +
                            companions_.companionName(controller, port) +
                            (isUSB2 ? ": USB 3 devices in that socket will run at USB 2 speed"
                                    : ": USB 2 devices in that socket will not work"));
        }
    }
    return lines;
}

std::int64_t CollectorModel::selectedPortCount(const USBControllerMap& controller) const {
    std::int64_t count = 0;
    for (const auto& port : controller.ports) {
        if (portSession(controller, port).selected) {
            ++count;
        }
    }
    return count;
}

std::map<std::string, std::int64_t> CollectorModel::previousCounts() const {
    std::map<std::string, std::int64_t> counts;
    for (const auto& controller : scannedControllers_) {
        counts[controller.stableID()] = selectedPortCount(controller);
    }
    return counts;
}

void CollectorModel::selectAllPorts() {
    const auto counts = previousCounts();
    // Exactly the scanned ports: a stale key's check goes too.
    std::set<std::string> all;
    for (const auto& controller : scannedControllers_) {
        for (const auto& port : controller.ports) {
            all.insert(usbPortStableID(controller, port));
        }
    }
    session_.selectOnly(all);
    warnIfAnyControllerReachedPortLimit(counts);
    changed();
}

void CollectorModel::deselectAllPorts() {
    session_.editAll([](SessionPort& entry) { entry.selected = false; });
    changed();
}

void CollectorModel::setPortSelected(const USBControllerMap& controller, const USBPortMap& port,
                                     bool selected) {
    const std::int64_t before = selectedPortCount(controller);
    session_.edit(usbPortStableID(controller, port),
                  [selected](SessionPort& entry) { entry.selected = selected; });
    if (shouldWarnAboutSystemPortLimit(controller) && before < portLimit &&
        selectedPortCount(controller) >= portLimit) {
        showPortLimitWarning_ = true;
    }
    changed();
}

bool CollectorModel::isPortSelected(const USBControllerMap& controller, const USBPortMap& port) const {
    return portSession(controller, port).selected;
}

std::int64_t CollectorModel::connectorFor(const USBControllerMap& controller, const USBPortMap& port) const {
    return portSession(controller, port).connector.value_or(port.connector);
}

ConnectorSource CollectorModel::connectorSourceFor(const USBControllerMap& controller,
                                                   const USBPortMap& port) const {
    return connectorFor(controller, port) == port.connector ? port.connectorSource : ConnectorSource::user;
}

void CollectorModel::setConnector(const USBControllerMap& controller, const USBPortMap& port,
                                  std::int64_t code) {
    if (isSameTypeForCompanion(controller, port)) {
        setConnectorWithCompanion(controller, port, code);
        return;
    }
    // Stored even when it equals the scanned value: a pick is the user's word.
    session_.edit(usbPortStableID(controller, port), [code](SessionPort& entry) { entry.connector = code; });
    changed();
}

std::optional<ScannedPort> CollectorModel::companionOf(const USBPortMap& port) const {
    return companions_.companionOf(port);
}

std::string CollectorModel::companionName(const USBControllerMap& controller, const USBPortMap& port) const {
    return companions_.companionName(controller, port);
}

std::string CollectorModel::companionText(const USBControllerMap& controller, const USBPortMap& port) const {
    const std::string name = companionName(controller, port);
    return name.empty() ? "" : "with " + name;
}

void CollectorModel::setConnectorWithCompanion(const USBControllerMap& controller, const USBPortMap& port,
                                               std::int64_t code) {
    const auto pick = [code](SessionPort& entry) { entry.connector = code; };
    session_.edit(usbPortStableID(controller, port), pick);
    if (const auto companion = companionOf(port)) {
        session_.edit(usbPortStableID(*companion->controller, *companion->port), pick);
    }
    changed();
}

void CollectorModel::setSameTypeForCompanion(const USBControllerMap& controller, const USBPortMap& port,
                                             bool isOn) {
    const auto companion = companionOf(port);
    if (!companion) {
        return;
    }
    const auto key = usbPortStableID(controller, port);
    const auto companionKey = usbPortStableID(*companion->controller, *companion->port);
    if (isOn) {
        sameTypeForCompanionPortIDs_.insert({key, companionKey});
        setConnectorWithCompanion(controller, port, connectorFor(controller, port));
        return;
    }
    sameTypeForCompanionPortIDs_.erase(key);
    sameTypeForCompanionPortIDs_.erase(companionKey);
    changed();
}

bool CollectorModel::isSameTypeForCompanion(const USBControllerMap& controller,
                                            const USBPortMap& port) const {
    return sameTypeForCompanionPortIDs_.contains(usbPortStableID(controller, port));
}

std::int64_t CollectorModel::presentSelectedPortCount() const {
    std::set<std::string> present;
    for (const auto& controller : scannedControllers_) {
        for (const auto& port : controller.ports) {
            if (isPortSelected(controller, port)) {
                present.insert(usbPortStableID(controller, port));
            }
        }
    }
    return static_cast<std::int64_t>(present.size());
}

std::int64_t CollectorModel::keptAbsentPortCount() const {
    return static_cast<std::int64_t>(session_.selectedKeys().size()) - presentSelectedPortCount();
}

std::int64_t CollectorModel::totalPortCount() const {
    std::int64_t total = 0;
    for (const auto& controller : scannedControllers_) {
        total += static_cast<std::int64_t>(controller.ports.size());
    }
    return total;
}

void CollectorModel::dismissPortLimitWarning() {
    showPortLimitWarning_ = false;
    changed();
}

void CollectorModel::warnIfAnyControllerReachedPortLimit(const std::map<std::string, std::int64_t>& counts) {
    for (const auto& controller : scannedControllers_) {
        if (!shouldWarnAboutSystemPortLimit(controller)) {
            continue;
        }
        const auto previous = counts.find(controller.stableID());
        const bool wasBelow = previous == counts.end() || previous->second < portLimit;
        if (wasBelow && selectedPortCount(controller) >= portLimit) {
            showPortLimitWarning_ = true;
            return;
        }
    }
}

std::optional<std::int64_t> portBudgetFor(const USBControllerMap&) {
    // macOS's xHCI drivers use at most 15 ports of any controller; the alert
    // is kept to Intel's, the only ones that commonly have more.
    return CollectorModel::portLimit;
}

bool shouldWarnAboutSystemPortLimit(const USBControllerMap& controller) {
    if (controller.vendorID != 0x8086) {
        return false;
    }
    for (const std::string* text : {&controller.name, &controller.ioNameMatch, &controller.location}) {
        std::string words = uppercased(*text);
        for (char& c : words) {
            if (c == '@' || c == ':' || c == '/') {
                c = ' ';
            }
        }
        // Only blanks part words: "Intel<TAB>XHCI" is one piece, not two.
        std::string_view rest = words;
        while (!rest.empty()) {
            const auto blank = rest.find(' ');
            const auto piece = rest.substr(0, blank);
            if (piece == "XHC" || piece == "XHCI") {
                return true;
            }
            rest.remove_prefix(blank == std::string_view::npos ? rest.size() : blank + 1);
        }
    }
    return false;
}

} // namespace korvane
