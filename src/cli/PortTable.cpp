#include "cli/PortTable.h"

#include "package/ControllerContribution.h"
#include "records/ASCIIText.h"
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

std::string controllerName(const USBControllerMap& controller) {
    return controller.name.empty() ? "USB Controller" : controller.name;
}

std::string identity(const USBControllerMap& controller) {
    return asciiUppercased(vendorDeviceText(controller.vendorID, controller.deviceID));
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
        text += fmt::format("  {} {}: {}\n", controllerName(controller), identity(controller),
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
            fmt::format("{}  {}  {}\n", controllerName(controller), identity(controller),
                        controller.usbDeviceName.empty() ? "(unknown controller)" : controller.usbDeviceName);
        text += fmt::format("  location {}, {}, {} port(s)\n",
                            controller.location.empty() ? "-" : controller.location,
                            controller.providerClass.empty() ? "no host service" : controller.providerClass,
                            controller.ports.size());
        text += fmt::format("  Generate writes: {}\n",
                            contributionText(controllerContribution(controller, model.selectedPortIDs())));
        for (const auto& port : controller.ports) {
            const auto key = usbPortStableID(controller, port);
            const std::string place = port.place ? portPlaceText(*port.place) : std::string();
            text += fmt::format(
                "  {} [{}] {:<6} port {:<10} {:<15} {:<9} {:<8} {}{}\n", changed.contains(key) ? '*' : ' ',
                model.isPortSelected(controller, port) ? 'x' : ' ', port.name, hexString(port.portData),
                model.companionText(controller, port), connectorText(model.connectorFor(controller, port)),
                connectorSourceName(model.connectorSourceFor(controller, port)),
                port.activeDevice.empty() ? "No active device" : port.activeDevice,
                place.empty() ? "" : "  (" + place + ")");
        }
    }
    text +=
        fmt::format("{} of {} port(s) selected.\n", model.selectedPortIDs().size(), model.totalPortCount());
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
                 {"place", port.place ? placeJSON(*port.place) : nlohmann::json()}});
        }
        const auto contribution = controllerContribution(controller, model.selectedPortIDs());
        controllers.push_back({{"name", controller.name},
                               {"location", controller.location},
                               {"vendorID", controller.vendorID},
                               {"deviceID", controller.deviceID},
                               {"ioNameMatch", controller.ioNameMatch},
                               {"providerClass", controller.providerClass},
                               {"usbDeviceName", controller.usbDeviceName},
                               {"stableID", controller.stableID()},
                               {"willWrite",
                                {{"kind", kindName(contribution.kind)},
                                 {"ports", contribution.portCount},
                                 {"text", contributionText(contribution)}}},
                               {"ports", std::move(ports)}});
    }
    return {{"controllers", std::move(controllers)}};
}

} // namespace korvane
