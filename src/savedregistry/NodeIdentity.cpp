#include "savedregistry/NodeIdentity.h"

#include "scanner/PropertyReaders.h"

namespace korvane {
namespace {

// Puts a stand-in into the dictionary for as long as it lives, so that the
// readers see it without copying the entry's (often large) properties.
class TemporaryProperty {
  public:
    TemporaryProperty(PropertyDictionary& properties, const char* key, const std::string& value)
        : properties_(properties) {
        if (!value.empty()) {
            auto [where, isInserted] = properties_.try_emplace(key, PropertyValue(value));
            if (isInserted) {
                inserted_ = where;
                isActive_ = true;
            }
        }
    }
    ~TemporaryProperty() {
        if (isActive_) {
            properties_.erase(inserted_);
        }
    }
    TemporaryProperty(const TemporaryProperty&) = delete;
    TemporaryProperty& operator=(const TemporaryProperty&) = delete;

  private:
    PropertyDictionary& properties_;
    PropertyDictionary::iterator inserted_;
    bool isActive_ = false;
};

} // namespace

void assignNodeIdentity(NativeUSBNode& node, const std::string& entryName, const std::string& entryLocation) {
    // A live source reads the location from the properties alone, and a PCI
    // device's hold none: two Thunderbolt controllers, both "@0" behind
    // different bridges, must not take that one location.
    const bool isPrintedWithProperties = !node.properties.empty();
    TemporaryProperty name(node.properties, "IOName", entryName);
    TemporaryProperty location(node.properties, "location", isPrintedWithProperties ? "" : entryLocation);
    node.name = registryName(node.properties, node.className);
    node.location = registryLocation(node.properties);
}

} // namespace korvane
