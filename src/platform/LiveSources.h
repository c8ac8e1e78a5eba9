#pragma once

#include "collector/HotplugSource.h"
#include "collector/Scheduler.h"
#include "package/ScanSource.h"
#include "scanner/RegistrySource.h"
#include "tools/ToolPaths.h"

#include <memory>
#include <optional>
#include <string>

namespace korvane {

// This machine's own registry and device events, chosen for the platform the
// program was built for.

// Never null: a platform without a readable registry gives a source whose
// tree is empty. `tools` names the tools the source may run (acpiexec on Linux).
std::unique_ptr<RegistrySource> makeLiveRegistrySource(const ToolPaths& tools);

// Null where the platform can't tell about USB devices coming and going.
// Events reach the main thread through `scheduler`.
std::unique_ptr<HotplugSource> makeHotplugSource(Scheduler& scheduler);

// This machine's model when it names a Mac's: `sysctl -n hw.model` on macOS;
// on Linux the firmware's product name, below the same sysfs root the live
// registry is read from, when it has a Mac model's shape. No value otherwise.
// May block for a tool; call it off the main thread.
std::optional<std::string> liveMachineModel(const ToolPaths& tools);

// What a scan of makeLiveRegistrySource's registry reads, as the report says it.
ScanSource liveScanSource();

} // namespace korvane
