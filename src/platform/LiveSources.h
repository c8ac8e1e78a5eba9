#pragma once

#include "collector/HotplugSource.h"
#include "collector/Scheduler.h"
#include "scanner/RegistrySource.h"
#include "tools/ToolPaths.h"

#include <memory>

namespace korvane {

// This machine's own registry and device events, chosen for the platform the
// program was built for.

// Never null: a platform without a readable registry gives a source whose
// tree is empty. `tools` names the tools the source may run (acpiexec on Linux).
std::unique_ptr<RegistrySource> makeLiveRegistrySource(const ToolPaths& tools);

// Null where the platform can't tell about USB devices coming and going.
// Events reach the main thread through `scheduler`.
std::unique_ptr<HotplugSource> makeHotplugSource(Scheduler& scheduler);

} // namespace korvane
