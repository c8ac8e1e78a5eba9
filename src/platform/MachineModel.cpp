#include "platform/MachineModel.h"

#include "base/Text.h"
#include "tools/ProcessRunner.h"

namespace korvane {

std::optional<std::string> sysctlMachineModel(const std::string& sysctlPath) {
    constexpr double timeout = 5;
    std::string model = trimmed(runProcessCapturing(sysctlPath, {"-n", "hw.model"}, timeout));
    if (model.empty() || model.starts_with("Failure/")) {
        return std::nullopt;
    }
    return model;
}

} // namespace korvane
