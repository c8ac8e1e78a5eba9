#pragma once

#include "platform/linux/SysfsTreeBuilder.h"

#include <cstdint>
#include <filesystem>
#include <map>
#include <string>

namespace korvane {

// One USB device directory of sysfs (1-3, 1-3.1, ...) as the registry shows
// an attached device: an "IOUSBHostDevice" node with the names and IDs the
// Mac gives it, its interfaces ("IOUSBHostInterface") and, for a hub, the
// hub's own ports with their devices below them.
class SysfsUSBDevice {
  public:
    SysfsUSBDevice(std::filesystem::path directory, std::uint32_t locationID, int tier)
        : directory_(std::move(directory)), locationID_(locationID), tier_(tier) {}

    // Adds the device and everything below it under `parent`.
    void addTo(NativeUSBNode& parent, SysfsTreeBuilder& builder, int depth) const;

    // The devices directly below a hub, by the hub port they hang on: for the
    // root hub usb1 these are 1-1, 1-2, ...; for the hub 1-3 they are 1-3.1,
    // 1-3.2, ... The port comes from the name, which sysfs also uses for the
    // device's `port` link, and which umockdev recordings keep.
    static std::map<std::uint32_t, std::string> childDevices(const std::filesystem::path& hubDirectory,
                                                             const std::string& childPrefix);

    // The registry's location of something on port `port` of a hub whose own
    // location is `hubLocation`, `tier` hubs below the controller: one nibble
    // per tier below the controller's byte, as the Mac numbers them.
    static std::uint32_t locationBelow(std::uint32_t hubLocation, int tier, std::uint32_t port);

  private:
    PropertyDictionary properties() const;
    void addInterfacesAndChildren(NativeUSBNode& device, SysfsTreeBuilder& builder, int depth) const;

    std::filesystem::path directory_;
    std::uint32_t locationID_;
    int tier_; // 1 for a device on a root-hub port
};

} // namespace korvane
