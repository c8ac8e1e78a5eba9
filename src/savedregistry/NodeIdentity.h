#pragma once

#include "scanner/NativeUSBNode.h"

#include <string>

namespace korvane {

// Sets the node's name and location from its properties the way a live source
// does. A saved registry also records each entry's registry name and location
// apart from its properties (the node line of a text dump, the
// IORegistryEntryName and IORegistryEntryLocation keys of a snapshot); these
// stand in as `IOName` and `location` only where the properties have no such
// key, and they are never added to the properties. Empty texts stand in for
// nothing.
void assignNodeIdentity(NativeUSBNode& node, const std::string& entryName, const std::string& entryLocation);

} // namespace korvane
