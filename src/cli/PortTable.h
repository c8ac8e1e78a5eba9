#pragma once

#include "collector/CollectorModel.h"

#include <nlohmann/json.hpp>
#include <set>
#include <string>

namespace korvane {

// The port editor's state as the command line prints it: a table for people,
// one JSON object for scripts. Ports whose key is in `changed` are marked.
std::string portTable(const CollectorModel& model, const std::set<std::string>& changed = {});
nlohmann::json portJSON(const CollectorModel& model);

// What a run would write for each controller, one line each:
// "  XHC1 8086:A36D: 3 ports checked".
std::string contributionLines(const CollectorModel& model);

// The label of a connector code in the editor's menu, or its number.
std::string connectorText(std::int64_t code);

} // namespace korvane
