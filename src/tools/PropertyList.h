#pragma once

#include <memory>
#include <plist/plist.h>
#include <string>
#include <string_view>

namespace korvane {

struct PlistFree {
    void operator()(plist_t node) const { plist_free(node); }
};

// Owns a libplist tree.
using PlistPtr = std::unique_ptr<void, PlistFree>;

// Parses XML or binary property-list bytes; null when they are not one.
PlistPtr parsePropertyList(std::string_view bytes);

// The tree as an XML property list.
std::string propertyListXML(plist_t root);

} // namespace korvane
