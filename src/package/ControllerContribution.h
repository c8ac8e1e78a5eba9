#pragma once

#include "records/USBControllerMap.h"

#include <cstddef>
#include <set>
#include <string>

namespace korvane {

// What a generation run would write for one controller if it started now: the
// checked ports; when none is checked, the built-in template's ports (the
// writer falls back on them, which surprises a user who unticked a controller
// to leave it out); or, without a template, the support personality alone.
// The window's sections, `scan`'s table and `generate` say it before a run.
struct ControllerContribution {
    enum class Kind { checkedPorts, templatePorts, supportPersonalityOnly };

    Kind kind = Kind::supportPersonalityOnly;
    std::size_t portCount = 0;

    bool operator==(const ControllerContribution&) const = default;
};

// Pure: `selectedPortIDs` are port keys, as the editor keeps them. A checked
// port counts once per port of the controller that carries its key, as the
// run hands them over.
ControllerContribution controllerContribution(const USBControllerMap& controller,
                                              const std::set<std::string>& selectedPortIDs);

// "3 ports checked", "no port checked: the built-in template's 24 ports will
// be written" or "support personality only".
std::string contributionText(const ControllerContribution& contribution);

} // namespace korvane
