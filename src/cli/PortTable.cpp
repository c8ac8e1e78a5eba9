#include "cli/PortTable.h"

#include "collector/PortBudget.h"
#include "mapfile/MapFileCodec.h"
#include "mapfile/PortSighting.h"
#include "package/ControllerContribution.h"
#include "records/Connector.h"
#include "records/PCIIdentityText.h"

#include <fmt/format.h>

namespace korvane {

std::string connectorText(std::int64_t code) {
    if (auto label = connectorMenuLabel(code)) {
        return std::string(*label);
    }
    return std::to_string(code);
}

namespace {

nlohmann::json placeJSON(const PortPlace& place) {
    return {{"panel", place.panel},
            {"verticalPosition", place.verticalPosition},
            {"horizontalPosition", place.horizontalPosition},
            {"dock", place.isOnDock},
            {"lid", place.isInLid},
            {"text", portPlaceText(place)}};
}

std::string identity(const USBControllerMap& controller) {
    return upperVendorDeviceText(controller.vendorID, controller.deviceID);
}

const char* kindName(ControllerContribution::Kind kind) {
    switch (kind) {
    case ControllerContribution::Kind::checkedPorts:
        return "checkedPorts";
    case ControllerContribution::Kind::templatePorts:
        return "templatePorts";
    case ControllerContribution::Kind::supportPersonalityOnly:
        break;
    }
    return "supportPersonalityOnly";
}

} // namespace

std::string contributionLines(const CollectorModel& model) {
    std::string text;
    for (const auto& controller : model.scannedControllers()) {
        text += fmt::format("  {} {}: {}\n", controller.displayName(), identity(controller),
                            contributionText(controllerContribution(controller, model.selectedPortIDs())));
    }
    return text;
}

std::string portTable(const CollectorModel& model, const std::set<std::string>& changed) {
    const auto& controllers = model.scannedControllers();
    if (controllers.empty()) {
        return "No USB controller found.\n";
    }
    std::string text;
    for (const auto& controller : controllers) {
        text +=
            fmt::format("{}  {}  {}\n", controller.displayName(), identity(controller),
                        controller.usbDeviceName.empty() ? "(unknown controller)" : controller.usbDeviceName);
        text += fmt::format("  location {}, {}, {} port(s)\n",
                            controller.location.empty() ? "-" : controller.location,
                            controller.providerClass.empty() ? "no host service" : controller.providerClass,
                            controller.ports.size());
        const PortBudget budget = portBudget(controller, model.selectedPortIDs());
        text += fmt::format("  Generate writes: {} ({}{})\n", contributionText(budget.contribution),
                            portBudgetText(budget), budget.isOverLimit() ? ", OVER THE LIMIT" : "");
        if (const std::string unseen = unseenTemplatePortsText(budget); !unseen.empty()) {
            text += "  " + unseen + "\n";
        }
        for (const auto& port : controller.ports) {
            const auto key = usbPortStableID(controller, port);
            const std::string nickname = model.nicknameFor(controller, port);
            const std::string place = port.place ? portPlaceText(*port.place) : std::string();
            text += fmt::format(
                "  {} [{}] {:<6} port {:<10} {:<15} {:<9} {:<8} {}{}{}\n", changed.contains(key) ? '*' : ' ',
                model.isPortSelected(controller, port) ? 'x' : ' ', port.name, hexString(port.portData),
                model.companionText(controller, port), connectorText(model.connectorFor(controller, port)),
                connectorSourceName(model.connectorSourceFor(controller, port)),
                model.deviceTextFor(controller, port), place.empty() ? "" : "  (" + place + ")",
                nickname.empty() ? "" : "  \"" + nickname + "\"");
        }
    }
    text += fmt::format(
        "{} of {} port(s) selected{}.\n", model.presentSelectedPortCount(), model.totalPortCount(),
        model.keptAbsentPortCount() > 0
            ? fmt::format("; {} kept for ports not on this machine", model.keptAbsentPortCount())
            : "");
    return text;
}

namespace {

nlohmann::json seenJSON(const CollectorModel& model, const USBControllerMap& controller,
                        const USBPortMap& port) {
    const auto& sighting = model.portSession(controller, port).sighting;
    return sighting ? sightingJSON(*sighting) : nlohmann::json(nullptr);
}

} // namespace

std::string notMatchedText(const std::vector<std::string>& notMatched) {
    if (notMatched.empty()) {
        return "Every port of the map is on this machine.\n";
    }
    std::string text = fmt::format("Not on this machine ({}):\n", notMatched.size());
    for (const auto& line : notMatched) {
        text += "  " + line + "\n";
    }
    return text;
}

nlohmann::json portJSON(const CollectorModel& model) {
    auto controllers = nlohmann::json::array();
    for (const auto& controller : model.scannedControllers()) {
        auto ports = nlohmann::json::array();
        for (const auto& port : controller.ports) {
            ports.push_back(
                {{"name", port.name},
                 {"location", port.location},
                 {"connector", model.connectorFor(controller, port)},
                 {"portData", hexString(port.portData)},
                 {"comment", port.comment},
                 {"activeDevice", port.activeDevice},
                 {"portKey", usbPortStableID(controller, port)},
                 {"companion",
                  port.companionKey.empty() ? nlohmann::json(nullptr) : nlohmann::json(port.companionKey)},
                 {"selected", model.isPortSelected(controller, port)},
                 {"connectorSource", connectorSourceName(model.connectorSourceFor(controller, port))},
                 {"place", port.place ? placeJSON(*port.place) : nlohmann::json()},
                 {"nickname", model.nicknameFor(controller, port)},
                 {"note", model.portSession(controller, port).note},
                 {"seen", seenJSON(model, controller, port)}});
        }
        const PortBudget budget = portBudget(controller, model.selectedPortIDs());
        const auto& contribution = budget.contribution;
        auto identity = controllerIdentityJSON(controller);
        identity["stableID"] = controller.stableID();
        identity["willWrite"] = {{"kind", kindName(contribution.kind)},
                                 {"ports", contribution.portCount},
                                 {"text", contributionText(contribution)}};
        // What a run would write against the 15 ports macOS uses.
        identity["portBudget"] = budget.count();
        identity["ports"] = std::move(ports);
        controllers.push_back(std::move(identity));
    }
    return {{"controllers", std::move(controllers)}};
}

} // namespace korvane
