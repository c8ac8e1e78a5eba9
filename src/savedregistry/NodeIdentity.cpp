#include "savedregistry/NodeIdentity.h"

#include "base/Text.h"
#include "scanner/PropertyReaders.h"

namespace korvane {

// A stand-in is used as the readers would use a non-empty text under that key.
void assignNodeIdentity(NativeUSBNode& node, const std::string& entryName, const std::string& entryLocation) {
    // A live source reads the location from the properties alone, and a PCI
    // device's hold none: two Thunderbolt controllers, both "@0" behind
    // different bridges, must not take that one location.
    const bool isPrintedWithProperties = !node.properties.empty();
    node.name = entryName.empty() || node.properties.contains("IOName")
                    ? registryName(node.properties, node.className)
                    : entryName;
    node.location = entryLocation.empty() || isPrintedWithProperties ? registryLocation(node.properties)
                                                                     : uppercased(entryLocation);
}

} // namespace korvane
