#include "platform/LiveSources.h"
#include "platform/MachineModel.h"
#include "platform/macos/IOKitHotplugSource.h"
#include "platform/macos/IOKitRegistrySource.h"

namespace korvane {

std::unique_ptr<RegistrySource> makeLiveRegistrySource(const ToolPaths&) {
    return std::make_unique<IOKitRegistrySource>();
}

std::unique_ptr<HotplugSource> makeHotplugSource(Scheduler& scheduler) {
    return std::make_unique<IOKitHotplugSource>(scheduler);
}

std::optional<std::string> liveMachineModel(const ToolPaths& tools) {
    return sysctlMachineModel(tools.sysctl);
}

ScanSource liveScanSource() {
    return {.kind = ScanSource::Kind::liveMac};
}

} // namespace korvane
