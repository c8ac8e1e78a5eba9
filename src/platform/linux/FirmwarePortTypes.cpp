#include "platform/linux/FirmwarePortTypes.h"

#include "base/Text.h"

namespace korvane {

namespace {

constexpr std::int64_t lastNumberedACPIConnectorType = 0x0A;
constexpr std::int64_t proprietaryACPIConnectorType = 0xFF;
constexpr const char* meanwhile = " Until then the types shown come from the kernel or are guessed.";

} // namespace

std::optional<std::int64_t> FirmwarePortTypes::connectorType(const std::string& firmwarePath,
                                                             const std::string& portName) {
    if (!evaluation_) {
        evaluation_ = reader_.evaluate();
    }
    const auto& output = evaluation_->output;
    if (auto failure = output.failures.find(firmwarePath); failure != output.failures.end()) {
        if (failedPorts_.empty()) {
            firstFailure_ = failure->second;
        }
        failedPorts_.push_back(portName);
        return std::nullopt;
    }
    const auto answer = output.answers.find(firmwarePath);
    if (answer == output.answers.end() || !answer->second.isConnectable) {
        return std::nullopt;
    }
    const std::int64_t type = answer->second.connectorType;
    if ((type >= 0 && type <= lastNumberedACPIConnectorType) || type == proprietaryACPIConnectorType) {
        return type;
    }
    return std::nullopt;
}

std::vector<std::string> FirmwarePortTypes::notices() const {
    if (!evaluation_ || evaluation_->hasNoTables) {
        return {};
    }
    const FirmwareUPCEvaluation& evaluation = *evaluation_;
    if (evaluation.areTablesUnreadable && evaluation.isToolMissing) {
        return {std::string("Connector types from the firmware need root and acpica-tools: install "
                            "acpica-tools (sudo apt install acpica-tools) and run as root (sudo).") +
                meanwhile};
    }
    if (evaluation.areTablesUnreadable) {
        return {std::string("Connector types from the firmware need root: the ACPI tables are readable by "
                            "root only, so run as root (sudo).") +
                meanwhile};
    }
    if (evaluation.isToolMissing) {
        return {std::string("Connector types from the firmware need acpiexec: install acpica-tools "
                            "(sudo apt install acpica-tools).") +
                meanwhile};
    }
    if (!evaluation.failure.empty()) {
        return {"Connector types from the firmware could not be read: " + evaluation.failure + "." +
                meanwhile};
    }
    std::vector<std::string> notices;
    const auto loaded = evaluation.output.loadedTables;
    if (loaded && *loaded < evaluation.tableCount) {
        notices.push_back("Connector types from the firmware may be incomplete: acpiexec loaded " +
                          std::to_string(*loaded) + " of the " + std::to_string(evaluation.tableCount) +
                          " ACPI tables.");
    }
    if (!failedPorts_.empty()) {
        notices.push_back("The firmware's _UPC failed for " + joined(failedPorts_, ", ") + " (" +
                          firstFailure_ + "); " + (failedPorts_.size() == 1 ? "its" : "their") +
                          " connector type comes from the kernel or is guessed.");
    }
    return notices;
}

} // namespace korvane
