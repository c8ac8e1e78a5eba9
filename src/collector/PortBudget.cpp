#include "collector/PortBudget.h"

#include "package/LegacyUSBPortTemplate.h"

namespace korvane {

PortBudget portBudget(const USBControllerMap& controller, const std::set<std::string>& selectedPortIDs) {
    PortBudget budget{controller.displayName(), controllerContribution(controller, selectedPortIDs), {}};
    if (budget.contribution.kind != ControllerContribution::Kind::templatePorts || controller.ports.empty()) {
        return budget;
    }
    std::set<std::string> seen;
    for (const auto& port : controller.ports) {
        seen.insert(port.name);
    }
    for (const auto& port : legacyUSBPortTemplatePorts(controller)) {
        if (!seen.contains(port.name)) {
            budget.unseenTemplatePorts.push_back(port.name);
        }
    }
    return budget;
}

std::string portBudgetText(const PortBudget& budget) {
    return std::to_string(budget.count()) + " of " + std::to_string(portBudgetLimit);
}

std::string overLimitText(const PortBudget& budget) {
    const bool isTemplate = budget.contribution.kind == ControllerContribution::Kind::templatePorts;
    return budget.controllerName + " would be written with " + std::to_string(budget.count()) + " ports" +
           (isTemplate ? " (the built-in template's, as none is checked)" : "") +
           ", and macOS uses at most " + std::to_string(portBudgetLimit);
}

std::string unseenTemplatePortsText(const PortBudget& budget) {
    if (budget.unseenTemplatePorts.empty()) {
        return {};
    }
    std::string names;
    for (const auto& name : budget.unseenTemplatePorts) {
        names += (names.empty() ? "" : ", ") + name;
    }
    return budget.controllerName +
           ": nothing is checked, so the built-in template is written, with ports the scan didn't see: " +
           names;
}

} // namespace korvane
