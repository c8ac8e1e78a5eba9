#include "collector/TargetModelResolver.h"

#include "records/MacModel.h"
#include "records/Text.h"

namespace korvane {

std::optional<std::string> targetModelChoiceOf(std::string_view typed) {
    std::string choice = trimmed(typed);
    return choice.empty() ? std::nullopt : std::optional(std::move(choice));
}

TargetMacModel TargetModelResolver::resolve(const std::optional<std::string>& choice) const {
    if (choice) {
        return {*choice, TargetMacModel::Source::userChoice};
    }
    if (machineModel_) {
        return {*machineModel_, TargetMacModel::Source::thisMachine};
    }
    return {std::string(fallbackMacModel), TargetMacModel::Source::fallback};
}

bool TargetModelResolver::shouldStartLookUp() {
    if (isMachineModelKnown_ || isLookingUp_) {
        return false;
    }
    isLookingUp_ = true;
    return true;
}

bool TargetModelResolver::store(std::optional<std::string> answer) {
    isLookingUp_ = false;
    answer = answer ? targetModelChoiceOf(*answer) : std::nullopt;
    if (isMachineModelKnown_ && answer == machineModel_) {
        return false;
    }
    machineModel_ = std::move(answer);
    isMachineModelKnown_ = true;
    return true;
}

} // namespace korvane
