#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace korvane {

// A port's _UPC as the firmware returns it: whether something can be plugged
// in, and the connector type byte (0x00 USB 2 Type-A, 0x03 USB 3 Type-A,
// 0x09 Type-C with switch, 0x0A Type-C, 0xFF proprietary or internal, ...).
struct FirmwareUPC {
    bool isConnectable = false;
    std::int64_t connectorType = 0;

    bool operator==(const FirmwareUPC&) const = default;
};

// What ACPICA's acpiexec printed for `-b "All _UPC"`: one answer per _UPC
// object of the loaded namespace, keyed by its device's path as Linux writes
// it in firmware_node/path ("\_SB_.PCI0.XHC_.RHUB.HS01"). For each object
// acpiexec prints either a status line with an error ("...HS05._UPC returned
// AE_AML_DIVIDE_BY_ZERO") or "Evaluation of ..._UPC returned object ..."
// followed by the package it returned, one "[Integer] = 00000000000000FF"
// line per element.
struct ACPIExecUPCOutput {
    std::map<std::string, FirmwareUPC, std::less<>> answers;
    // Device path -> why its _UPC gave no answer: the ACPI status, or a
    // result that is no package starting with two integers.
    std::map<std::string, std::string, std::less<>> failures;
    // From "ACPI: N ACPI AML tables successfully acquired and loaded"; no
    // value when acpiexec never got that far.
    std::optional<std::uint32_t> loadedTables;

    // Never fails and reads each byte once: output of any other shape
    // (cut off, interleaved with the firmware's own debug prints, not text)
    // gives fewer answers, never a crash. Bounded in input and entries.
    static ACPIExecUPCOutput parse(std::string_view output);
};

} // namespace korvane
