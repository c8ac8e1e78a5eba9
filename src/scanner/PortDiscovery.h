#pragma once

#include "ids/IDsNameResolver.h"
#include "records/USBPortMap.h"
#include "scanner/NativeUSBNode.h"
#include "scanner/PropertyValue.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

namespace korvane {

// The port list of one controller from the `ports` table of its service node
// and the port nodes below it. The table decides number and location; the tree
// adds the attached device and, for an active port, the connector.

// A node name or table key cut to its base name and upper-cased.
std::string portNameFrom(std::string_view nodeNameOrKey);

// True when an upper-cased base name looks like a port ("HS01", "SSP2", "PRT1").
bool matchesPortNamePattern(std::string_view upperCasedBaseName);

bool isUSBPortNode(const NativeUSBNode& node);

std::vector<USBPortMap> scanPorts(const NativeUSBNode& service, IDsNameResolver& names);

void appendPortsFromControllerProperties(const NativeUSBNode& service, std::vector<USBPortMap>& ports,
                                         std::unordered_set<std::string>& seen, IDsNameResolver& names);

// From the last comma piece of the location (hex) when above 0, else the
// digits of the name, plus 16 for "SS" names.
std::int64_t inferredPortNumber(std::string_view name, std::string_view location);

// 255 for Bluetooth, internal and "USR" ports, else 3.
std::int64_t inferredConnector(std::string_view name, const NativeUSBNode& node, IDsNameResolver& names);
// The same with firstAttachedDeviceName(node) already in hand.
std::int64_t inferredConnector(std::string_view name, const NativeUSBNode& node,
                               std::string_view attachedDeviceName);

} // namespace korvane
