#include "collector/TargetModelResolver.h"

#include "base/Text.h"
#include "records/MacModel.h"

namespace korvane {

std::string_view targetModelSourceText(TargetMacModel::Source source) {
    switch (source) {
    case TargetMacModel::Source::userChoice:
        return "your choice";
    case TargetMacModel::Source::savedRegistry:
        return "from the registry";
    case TargetMacModel::Source::thisMachine:
        return "from this machine";
    case TargetMacModel::Source::fallback:
        break;
    }
    return "no model found";
}

std::optional<std::string> targetModelChoiceOf(std::string_view typed) {
    std::string choice = trimmed(typed);
    return choice.empty() ? std::nullopt : std::optional(std::move(choice));
}

TargetMacModel TargetModelResolver::resolve(const std::optional<std::string>& choice) const {
    if (choice) {
        return {*choice, TargetMacModel::Source::userChoice};
    }
    if (machineModel_) {
        return {*machineModel_, machineSource_};
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

std::string TargetModelResolver::differenceNote(const std::optional<std::string>& choice) const {
    if (!choice || !machineModel_ || *choice == *machineModel_) {
        return {};
    }
    const std::string whose = machineSource_ == TargetMacModel::Source::savedRegistry
                                  ? "the registry's own model"
                                  : "this machine's own model";
    return "Your choice " + *choice + " differs from " + whose + " " + *machineModel_ +
           ": the map applies only on a Mac that reports " + *choice +
           " (right for a machine whose SMBIOS is set so on purpose).";
}

} // namespace korvane
