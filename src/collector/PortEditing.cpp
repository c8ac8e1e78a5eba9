// The port editor's side of the model: scans for editing, selection,
// connector choices and the port limit warning.

#include "collector/CollectorModel.h"
#include "package/LegacyUSBPortTemplate.h"
#include "records/Text.h"

#include <string_view>

namespace korvane {

void CollectorModel::scanUSBPorts() {
    startGuardedScan(false, true, false);
}

void CollectorModel::refreshActiveUSBDevices() {
    startGuardedScan(true, false, true);
}

void CollectorModel::startGuardedScan(bool preserveExistingSelection, bool resetConnectorOverrides,
                                      bool silent) {
    if (isRunning_ || isScanningUSB_) {
        return;
    }
    isScanningUSB_ = true;
    changed();
    std::weak_ptr<CollectorModel> weak = weak_from_this();
    environment_.scheduler.runInBackground(
        Scheduler::Priority::userInitiated,
        [weak, preserveExistingSelection, resetConnectorOverrides, silent] {
            if (auto model = weak.lock()) {
                model->runUSBScanForEditing(preserveExistingSelection, resetConnectorOverrides, silent);
            }
        });
}

void CollectorModel::runUSBScanForEditing(bool preserveExistingSelection, bool resetConnectorOverrides,
                                          bool silent) {
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
        std::set<std::string> selection =
            preserveExistingSelection ? selectedPortIDs_ : std::set<std::string>{};
        const auto seenAt = environment_.now();
        for (const auto& [key, device] : activeDevices) {
            selection.insert(key);
            portDiscoveries_[key] = {device, seenAt};
        }
        scannedControllers_ = std::move(controllers);
        scanNotices_ = std::move(scan.notices);
        indexCompanions();
        selectedPortIDs_ = std::move(selection);
        if (resetConnectorOverrides) {
            connectorOverrides_.clear();
            sameTypeForCompanionPortIDs_.clear();
        }
        if (!preserveExistingSelection && !mapFileURL_) {
            // Without a map file, what a reset brings back is no work to lose.
            savedContent_.selectedPortIDs = selectedPortIDs_;
            savedContent_.connectorOverrides = connectorOverrides_;
            for (const auto& [key, device] : activeDevices) {
                savedContent_.seenDevices[key] = device;
            }
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

std::int64_t CollectorModel::selectedPortCount(const USBControllerMap& controller) const {
    std::int64_t count = 0;
    for (const auto& port : controller.ports) {
        if (selectedPortIDs_.contains(usbPortStableID(controller, port))) {
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
    std::set<std::string> all;
    for (const auto& controller : scannedControllers_) {
        for (const auto& port : controller.ports) {
            all.insert(usbPortStableID(controller, port));
        }
    }
    selectedPortIDs_ = std::move(all);
    warnIfAnyControllerReachedPortLimit(counts);
    changed();
}

void CollectorModel::deselectAllPorts() {
    selectedPortIDs_.clear();
    changed();
}

void CollectorModel::setPortSelected(const USBControllerMap& controller, const USBPortMap& port,
                                     bool selected) {
    const std::int64_t before = selectedPortCount(controller);
    const auto key = usbPortStableID(controller, port);
    if (selected) {
        selectedPortIDs_.insert(key);
    } else {
        selectedPortIDs_.erase(key);
    }
    if (shouldWarnAboutSystemPortLimit(controller) && before < portLimit &&
        selectedPortCount(controller) >= portLimit) {
        showPortLimitWarning_ = true;
    }
    changed();
}

bool CollectorModel::isPortSelected(const USBControllerMap& controller, const USBPortMap& port) const {
    return selectedPortIDs_.contains(usbPortStableID(controller, port));
}

std::int64_t CollectorModel::connectorFor(const USBControllerMap& controller, const USBPortMap& port) const {
    const auto override = connectorOverrides_.find(usbPortStableID(controller, port));
    return override != connectorOverrides_.end() ? override->second : port.connector;
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
    connectorOverrides_[usbPortStableID(controller, port)] = code;
    changed();
}

std::optional<ScannedPort> CollectorModel::companionOf(const USBPortMap& port) const {
    if (port.companionKey.empty()) {
        return std::nullopt;
    }
    const auto found = companionsByKey_.find(port.companionKey);
    return found == companionsByKey_.end() ? std::nullopt : std::optional(found->second);
}

void CollectorModel::indexCompanions() {
    companionsByKey_.clear();
    std::set<std::string> named;
    for (const auto& controller : scannedControllers_) {
        for (const auto& port : controller.ports) {
            if (!port.companionKey.empty()) {
                named.insert(port.companionKey);
            }
        }
    }
    for (const auto& controller : scannedControllers_) {
        for (const auto& port : controller.ports) {
            if (auto key = usbPortStableID(controller, port); named.contains(key)) {
                companionsByKey_.emplace(std::move(key), ScannedPort{&controller, &port});
            }
        }
    }
}

std::string CollectorModel::companionName(const USBControllerMap& controller, const USBPortMap& port) const {
    const auto companion = companionOf(port);
    if (!companion) {
        return "";
    }
    if (companion->controller->stableID() == controller.stableID()) {
        return companion->port->name;
    }
    return companion->controller->displayName() + " " + companion->port->name;
}

std::string CollectorModel::companionText(const USBControllerMap& controller, const USBPortMap& port) const {
    const std::string name = companionName(controller, port);
    return name.empty() ? "" : "with " + name;
}

void CollectorModel::setConnectorWithCompanion(const USBControllerMap& controller, const USBPortMap& port,
                                               std::int64_t code) {
    connectorOverrides_[usbPortStableID(controller, port)] = code;
    if (const auto companion = companionOf(port)) {
        connectorOverrides_[usbPortStableID(*companion->controller, *companion->port)] = code;
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
