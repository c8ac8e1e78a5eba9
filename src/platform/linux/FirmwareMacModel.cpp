#include "platform/linux/FirmwareMacModel.h"

#include "platform/linux/SysfsReading.h"
#include "records/MacModel.h"

namespace korvane {

std::optional<std::string> firmwareMacModel(const std::filesystem::path& sysfsRoot) {
    // Read trimmed, as the kernel ends it with a line feed.
    auto name = sysfs::readText(sysfsRoot / "class" / "dmi" / "id" / "product_name");
    if (!name || !hasMacModelShape(*name)) {
        return std::nullopt;
    }
    return name;
}

} // namespace korvane
