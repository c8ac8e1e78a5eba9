#pragma once

#include "ids/IDsNameResolver.h"
#include "records/USBPortMap.h"
#include "scanner/NativeUSBNode.h"
#include "scanner/PortCompanions.h"
#include "scanner/PropertyValue.h"

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
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

// `companions`, when given, receives what each port (by name) says of its
// other half: the table entry's word first, else the first port node's.
std::vector<USBPortMap> scanPorts(const NativeUSBNode& service, IDsNameResolver& names,
                                  std::map<std::string, CompanionReference>* companions = nullptr);

// From the last comma piece of the location (hex) when above 0, else from the
// name (inferredPortNumberFromName).
std::int64_t inferredPortNumber(std::string_view name, std::string_view location);

// The connector of a port node that states none: 255 (internal) when the
// node's name or class or the device attached below it mentions Bluetooth or
// "internal", or the name begins with "USR"; else 3.
std::int64_t inferredConnectorFromNode(std::string_view name, const NativeUSBNode& node,
                                       std::string_view attachedDeviceName);

} // namespace korvane
