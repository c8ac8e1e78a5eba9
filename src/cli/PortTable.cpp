#include "cli/PortTable.h"

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

} // namespace

std::string portTable(const CollectorModel& model, const std::set<std::string>& changed) {
    const auto& controllers = model.scannedControllers();
    if (controllers.empty()) {
        return "No USB controller found.\n";
    }
    std::string text;
    for (const auto& controller : controllers) {
        text +=
            fmt::format("{}  {}  {}\n", controller.name.empty() ? "USB Controller" : controller.name,
                        asciiUppercased(vendorDeviceText(controller.vendorID, controller.deviceID)),
                        controller.usbDeviceName.empty() ? "(unknown controller)" : controller.usbDeviceName);
        text += fmt::format("  location {}, {}, {} port(s)\n",
                            controller.location.empty() ? "-" : controller.location,
                            controller.providerClass.empty() ? "no host service" : controller.providerClass,
                            controller.ports.size());
        for (const auto& port : controller.ports) {
            const auto key = usbPortStableID(controller, port);
            const std::string place = port.place ? portPlaceText(*port.place) : std::string();
            text += fmt::format("  {} [{}] {:<6} port {:<10} {:<9} {:<8} {}{}\n",
                                changed.contains(key) ? '*' : ' ',
                                model.isPortSelected(controller, port) ? 'x' : ' ', port.name,
                                hexString(port.portData), connectorText(model.connectorFor(controller, port)),
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
                 {"selected", model.isPortSelected(controller, port)},
                 {"connectorSource", connectorSourceName(model.connectorSourceFor(controller, port))},
                 {"place", port.place ? placeJSON(*port.place) : nlohmann::json()}});
        }
        controllers.push_back({{"name", controller.name},
                               {"location", controller.location},
                               {"vendorID", controller.vendorID},
                               {"deviceID", controller.deviceID},
                               {"ioNameMatch", controller.ioNameMatch},
                               {"providerClass", controller.providerClass},
                               {"usbDeviceName", controller.usbDeviceName},
                               {"stableID", controller.stableID()},
                               {"ports", std::move(ports)}});
    }
    return {{"controllers", std::move(controllers)}};
}

} // namespace korvane
