#include "platform/linux/FirmwareMacModel.h"

#include "platform/linux/SysfsReading.h"
#include "records/MacModel.h"
#include "records/Text.h"

namespace korvane {

std::optional<std::string> firmwareMacModel(const std::filesystem::path& sysfsRoot) {
    auto name = sysfs::readText(sysfsRoot / "class" / "dmi" / "id" / "product_name");
    if (!name) {
        return std::nullopt;
    }
    std::string model = trimmed(*name);
    if (!hasMacModelShape(model)) {
        return std::nullopt;
    }
    return model;
}

} // namespace korvane
