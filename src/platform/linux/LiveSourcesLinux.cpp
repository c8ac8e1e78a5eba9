#include "platform/LiveSources.h"
#include "platform/linux/SysfsRegistrySource.h"
#include "platform/linux/UdevHotplugSource.h"

namespace korvane {

std::unique_ptr<RegistrySource> makeLiveRegistrySource(const ToolPaths& tools) {
    return std::make_unique<SysfsRegistrySource>("/sys", tools.acpiexec);
}

std::unique_ptr<HotplugSource> makeHotplugSource(Scheduler& scheduler) {
    return std::make_unique<UdevHotplugSource>(scheduler, UdevHotplugSource::preferredNetlinkSource());
}

} // namespace korvane
