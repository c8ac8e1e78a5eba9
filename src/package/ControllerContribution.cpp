#include "package/ControllerContribution.h"

#include "package/PortsToWrite.h"

namespace korvane {

ControllerContribution controllerContribution(const USBControllerMap& controller,
                                              const std::set<std::string>& selectedPortIDs) {
    std::size_t checked = 0;
    for (const auto& port : controller.ports) {
        if (selectedPortIDs.contains(usbPortStableID(controller, port))) {
            ++checked;
        }
    }
    if (checked > 0) {
        return {ControllerContribution::Kind::checkedPorts, checked};
    }
    // What the writer gets for this controller when nothing is checked.
    USBControllerMap unchecked = controller;
    unchecked.ports.clear();
    const PortsToWrite fallback = portsToWrite(unchecked);
    if (fallback.isFromTemplate() && !fallback.ports.empty()) {
        return {ControllerContribution::Kind::templatePorts, fallback.ports.size()};
    }
    return {};
}

std::string contributionText(const ControllerContribution& contribution) {
    const std::string count = std::to_string(contribution.portCount);
    switch (contribution.kind) {
    case ControllerContribution::Kind::checkedPorts:
        return count + (contribution.portCount == 1 ? " port checked" : " ports checked");
    case ControllerContribution::Kind::templatePorts:
        return "no port checked: the built-in template's " + count + " ports will be written";
    case ControllerContribution::Kind::supportPersonalityOnly:
        break;
    }
    return "support personality only";
}

} // namespace korvane
