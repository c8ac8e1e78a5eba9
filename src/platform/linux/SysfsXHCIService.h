#pragma once

#include "platform/linux/FirmwarePortTypes.h"
#include "platform/linux/SysfsPCIDevice.h"
#include "platform/linux/SysfsTreeBuilder.h"
#include "records/Connector.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace korvane {

// The host service node below an xHCI PCI function, with one port node per
// port of the controller's two root hubs (USB 2 first, then USB 3) and the
// attached devices below the ports.
class SysfsXHCIService {
  public:
    // Where a port's controller number came from. Only the first two are
    // facts; the last is a guess and says so in the tree.
    enum class NumberSource { firmware, debugfs, rootHubPosition };

    struct RootPort {
        std::uint32_t bus = 0;
        bool isUSB3 = false;
        std::uint32_t position = 0; // port k of its root hub
        std::optional<std::filesystem::path> directory;
        std::string name;
        std::uint32_t number = 0;
        NumberSource numberSource = NumberSource::rootHubPosition;
        std::optional<std::int64_t> connector;
        ConnectorSource connectorSource = ConnectorSource::kernel; // of `connector`, when there is one
        std::string peerName;
    };

    // `locationID` is the service's, from uniqueControllerLocationIDs(); its
    // ports' locations sit below it. `firmwareTypes`, when given, types the
    // ports that the firmware types.
    SysfsXHCIService(const SysfsPCIDevice& pci, std::filesystem::path debugfsRoot, std::uint32_t locationID,
                     FirmwarePortTypes* firmwareTypes = nullptr)
        : pci_(pci), debugfsRoot_(std::move(debugfsRoot)), locationID_(locationID),
          firmwareTypes_(firmwareTypes) {}

    void addTo(NativeUSBNode& pciNode, SysfsTreeBuilder& builder) const;

    // The ports of both root hubs, named, numbered and typed; exposed for tests.
    std::vector<RootPort> rootPorts() const;

  private:
    const SysfsPCIDevice& pci_;
    std::filesystem::path debugfsRoot_; // <sysfs root>/kernel/debug
    std::uint32_t locationID_;
    FirmwarePortTypes* firmwareTypes_;
};

// The locationIDs of the machine's xHCI host services, in the order of
// `controllers`, made the way the Mac makes them: the PCI device number as
// the top byte, and where an earlier controller holds that value, the next
// free one. Controllers whose own value is free keep it whatever comes
// before them, so adding a card moves no other controller's ports.
std::vector<std::uint32_t> uniqueControllerLocationIDs(const std::vector<PCIAddress>& controllers);

} // namespace korvane
