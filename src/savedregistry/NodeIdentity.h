#pragma once

#include "scanner/NativeUSBNode.h"

#include <string>

namespace korvane {

// Sets the node's name and location from its properties the way a live source
// does. A saved registry also records each entry's registry name and location
// apart from its properties (the node line of a text dump, the
// IORegistryEntryName and IORegistryEntryLocation keys of a snapshot). The
// name stands in as `IOName` where the properties have none; the location
// stands in as `location` only for an entry saved without any properties, as
// the live registry shows an entry's location only through its properties.
// Neither is ever added to the properties; empty texts stand in for nothing.
void assignNodeIdentity(NativeUSBNode& node, const std::string& entryName, const std::string& entryLocation);

} // namespace korvane
