#pragma once

#include "ids/IDsNameResolver.h"
#include "scanner/NativeUSBNode.h"

#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

namespace korvane {

// The name of the first real device below `node` (the node itself not
// included), walking depth-first with parents before children; empty when
// there is none. A non-empty name is what makes a port count as active.
std::string firstAttachedDeviceName(const NativeUSBNode& node, IDsNameResolver& names);

// firstAttachedDeviceName() for many nodes of one subtree, each node's answer
// worked out once. The ports of a controller nest (hubs below ports, ports
// below ports), and asking each of them afresh would walk the same subtree
// again and again: quadratic on a deep chain of empty ports. Holds pointers
// into the tree, which must outlive it.
class AttachedDeviceNameCache {
  public:
    explicit AttachedDeviceNameCache(IDsNameResolver& names) : names_(names) {}

    const std::string& firstAttachedDeviceName(const NativeUSBNode& node);

  private:
    IDsNameResolver& names_;
    std::unordered_map<const NativeUSBNode*, std::string> firstNames_;
};

// The name a person would read for this node as a device, or none when the
// node is no device (ports, controllers, interfaces, plain services).
std::optional<std::string> usbAttachedDeviceDisplayName(const NativeUSBNode& node, IDsNameResolver& names);

// False for empty texts and for driver-class and placeholder names.
bool isUsableAttachedDeviceName(std::string_view text);

} // namespace korvane
