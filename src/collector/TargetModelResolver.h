#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace korvane {

// The Mac model a run writes into the merge personalities, and where it came
// from: the user's choice, else what the registry shown says of its own
// machine (a saved one's platform node, or this machine), else "Mac".
struct TargetMacModel {
    enum class Source { userChoice, savedRegistry, thisMachine, fallback };
    std::string value;
    Source source = Source::fallback;

    bool operator==(const TargetMacModel&) const = default;
};

// Where a model came from, as both fronts say it beside the model:
// "your choice", "from the registry", "from this machine", "no model found".
std::string_view targetModelSourceText(TargetMacModel::Source source);

// A model as the user typed it or a file holds it, as a session keeps it:
// trimmed, and none when nothing is left.
std::optional<std::string> targetModelChoiceOf(std::string_view typed);

// Which model a run writes, and what this machine said of its own. The
// machine is asked at most once; the asking itself (a tool, on a background
// thread) is the owner's, which tells the answer to store().
class TargetModelResolver {
  public:
    // `machineSource` is what the machine's answer counts as: a saved
    // registry's own model, or this machine's.
    explicit TargetModelResolver(TargetMacModel::Source machineSource = TargetMacModel::Source::thisMachine)
        : machineSource_(machineSource) {}

    TargetMacModel resolve(const std::optional<std::string>& choice) const;

    // What this machine said once asked; none before, or when it names no Mac.
    const std::optional<std::string>& machineModel() const { return machineModel_; }
    bool isMachineModelKnown() const { return isMachineModelKnown_; }

    // Whether the machine is to be asked now: true once, until store() is
    // told its answer.
    bool shouldStartLookUp();
    // Whether a run with this choice has to ask the machine first.
    bool needsMachineModel(const std::optional<std::string>& choice) const {
        return !choice && !isMachineModelKnown_;
    }
    // Keeps the machine's answer, trimmed (a blank one names no Mac). True
    // when what the resolver says changed.
    bool store(std::optional<std::string> answer);

    // When the choice names another model than the registry's or the
    // machine's own: a note saying both (a hackintosh's SMBIOS may differ on
    // purpose), else empty.
    std::string differenceNote(const std::optional<std::string>& choice) const;

  private:
    TargetMacModel::Source machineSource_;
    std::optional<std::string> machineModel_;
    bool isMachineModelKnown_ = false;
    bool isLookingUp_ = false;
};

} // namespace korvane
