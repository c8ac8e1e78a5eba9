#pragma once

#include "package/ControllerContribution.h"
#include "records/USBControllerMap.h"

#include <cstddef>
#include <set>
#include <string>
#include <vector>

namespace korvane {

// macOS uses at most this many ports of one controller; a map that writes
// more leaves some sockets dead.
inline constexpr std::size_t portBudgetLimit = 15;

// What a run would write for one controller, counted against that limit.
struct PortBudget {
    std::string controllerName;
    ControllerContribution contribution;
    // When the built-in template stands in for a controller whose scan
    // found ports: the template's ports the scan didn't see, in table order.
    std::vector<std::string> unseenTemplatePorts;

    std::size_t count() const { return contribution.portCount; }
    bool isOverLimit() const { return count() > portBudgetLimit; }
};

PortBudget portBudget(const USBControllerMap& controller, const std::set<std::string>& selectedPortIDs);

// "12 of 15".
std::string portBudgetText(const PortBudget& budget);

// "XHC1 would be written with 24 ports (the built-in template's, as none is
// checked), and macOS uses at most 15", for a budget over the limit.
std::string overLimitText(const PortBudget& budget);

// "XHC1: nothing is checked, so the built-in template is written with
// ports the scan didn't see: HS01, HS09", or "" when there are none.
std::string unseenTemplatePortsText(const PortBudget& budget);

} // namespace korvane
