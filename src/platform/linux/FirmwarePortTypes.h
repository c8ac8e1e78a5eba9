#pragma once

#include "platform/linux/FirmwareUPCReader.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace korvane {

// The firmware's connector types for the ports of one scan. The tables are
// evaluated when the first port with a firmware node asks, and only then:
// once per scan whatever the number of ports, and never on a machine whose
// ports have no firmware nodes (where the firmware has nothing to say).
class FirmwarePortTypes {
  public:
    explicit FirmwarePortTypes(const FirmwareUPCReader& reader) : reader_(reader) {}

    // The type the firmware gives the port whose node is `firmwarePath`
    // ("\_SB_.PCI0.XHC_.RHUB.HS01"): its _UPC says connectable, with a type
    // that ACPI defines (0x00 to 0x0A, 0xFF). None otherwise, and the port
    // keeps the kernel's rules. `portName` names it in a notice.
    std::optional<std::int64_t> connectorType(const std::string& firmwarePath, const std::string& portName);

    // What to tell the user once about this scan's firmware types: how to
    // get them (run as root, install acpica-tools) or what went wrong. Empty
    // when every port that has a node was answered, or none has one.
    std::vector<std::string> notices() const;

  private:
    const FirmwareUPCReader& reader_;
    std::shared_ptr<const FirmwareUPCEvaluation> evaluation_;
    std::vector<std::string> failedPorts_;
    std::string firstFailure_;
};

} // namespace korvane
