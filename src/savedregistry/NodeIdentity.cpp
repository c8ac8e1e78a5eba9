#include "savedregistry/NodeIdentity.h"

#include "records/Text.h"
#include "scanner/PropertyReaders.h"

namespace korvane {

// A stand-in is used as the readers would use a non-empty text under that key.
void assignNodeIdentity(NativeUSBNode& node, const std::string& entryName, const std::string& entryLocation) {
    node.name = entryName.empty() || node.properties.contains("IOName")
                    ? registryName(node.properties, node.className)
                    : entryName;
    node.location = entryLocation.empty() || node.properties.contains("location")
                        ? registryLocation(node.properties)
                        : uppercased(entryLocation);
}

} // namespace korvane
