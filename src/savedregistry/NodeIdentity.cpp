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
    TemporaryProperty name(node.properties, "IOName", entryName);
    TemporaryProperty location(node.properties, "location", entryLocation);
    node.name = registryName(node.properties, node.className);
    node.location = registryLocation(node.properties);
}

} // namespace korvane
