#pragma once

#include "app/RegistryChoice.h"
#include "collector/CollectorModel.h"
#include "tools/ToolPaths.h"

#include <filesystem>
#include <memory>

namespace korvane {

// Where this machine keeps what the program reads and writes.
struct ApplicationPaths {
    std::filesystem::path desktop;
    std::filesystem::path applicationSupport;
    std::filesystem::path resources;
    ToolPaths tools;
};

ApplicationPaths applicationPaths();

// The process's one resolver, over this machine's folders, made on first use.
IDsNameResolver& sharedIDsNameResolver();

// The model the fronts drive: scans of `registry` (and of the chosen ioreg
// dump), this machine's folders, tools and ids databases, the public ids
// repositories, and hotplug events when `listenForHotplug` is asked and the
// registry is this machine's live one. The scheduler and the desktop must
// outlive the model; the model keeps the registry alive itself.
std::shared_ptr<CollectorModel> assembleCollectorModel(const RegistryChoice& choice,
                                                       std::shared_ptr<const RegistrySource> registry,
                                                       Scheduler& scheduler, DesktopServices& desktop,
                                                       bool listenForHotplug);

} // namespace korvane
