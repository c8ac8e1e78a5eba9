#include "platform/LiveSources.h"
#include "platform/linux/FirmwareMacModel.h"
#include "platform/linux/SysfsRegistrySource.h"
#include "platform/linux/UdevHotplugSource.h"

namespace korvane {

namespace {

const std::filesystem::path liveSysfsRoot = "/sys";

} // namespace

std::unique_ptr<RegistrySource> makeLiveRegistrySource(const ToolPaths& tools) {
    return std::make_unique<SysfsRegistrySource>(liveSysfsRoot, tools.acpiexec);
}

std::unique_ptr<HotplugSource> makeHotplugSource(Scheduler& scheduler) {
    return std::make_unique<UdevHotplugSource>(scheduler, UdevHotplugSource::preferredNetlinkSource());
}

std::optional<std::string> liveMachineModel(const ToolPaths&) {
    // sysctl knows no hw.model here; the firmware's product name is the
    // nearest thing, and on a Mac it is the model itself.
    return firmwareMacModel(liveSysfsRoot);
}

ScanSource liveScanSource() {
    return {.kind = ScanSource::Kind::linuxSysfs};
}

} // namespace korvane
