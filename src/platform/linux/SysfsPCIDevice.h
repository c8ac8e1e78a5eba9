#pragma once

#include "scanner/PropertyValue.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace korvane {

// A PCI function as sysfs names it: 0000:00:14.0.
struct PCIAddress {
    std::uint32_t domain = 0;
    std::uint32_t bus = 0;
    std::uint32_t device = 0;
    std::uint32_t function = 0;

    static std::optional<PCIAddress> parse(std::string_view name);
    // "bus:device:function" in decimal, as the Mac's registry writes it in a
    // PCI device's `pcidebug`.
    std::string debugText() const;
};

// The PCI function's properties in the registry's conventions: IDs and class
// as 4-byte little-endian data, `name`/`IOName` from the firmware when it
// describes the device, `compatible`, `acpi-path` and `pcidebug`. Like the
// Mac's, they hold no `location`: a controller takes its location from its
// host service, which is unique on the machine, where the device number
// alone is not (two controllers behind two bridges are both device 0).
class SysfsPCIDevice {
  public:
    SysfsPCIDevice(std::filesystem::path directory, PCIAddress address)
        : directory_(std::move(directory)), address_(address) {}

    PropertyDictionary properties() const;
    // True for the xHCI programming interface (class 0c0330).
    bool isXHCI() const;

    const std::filesystem::path& directory() const { return directory_; }
    const PCIAddress& address() const { return address_; }

  private:
    std::filesystem::path directory_;
    PCIAddress address_;
};

// The firmware's name for a device with an ACPI companion: the last component
// of firmware_node/path with its "_" padding removed (\_SB_.PCI0.XHC_ gives
// XHC). No value without a companion or a usable path.
std::optional<std::string> firmwareNodeName(const std::filesystem::path& deviceDirectory);
std::optional<std::string> firmwareNodePath(const std::filesystem::path& deviceDirectory);

} // namespace korvane
