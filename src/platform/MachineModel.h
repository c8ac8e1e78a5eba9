#pragma once

#include <optional>
#include <string>

namespace korvane {

// What `sysctl -n hw.model` at `sysctlPath` says, trimmed; no value when the
// tool fails, runs out of time or prints nothing. Blocks for the tool (at
// most 5 seconds); call it off the main thread.
std::optional<std::string> sysctlMachineModel(const std::string& sysctlPath);

} // namespace korvane
