#include "tools/PropertyList.h"

#include <cstdint>
#include <cstdlib>
#include <limits>

namespace korvane {

PlistPtr parsePropertyList(std::string_view bytes) {
    if (bytes.empty() || bytes.size() > std::numeric_limits<std::uint32_t>::max()) {
        return nullptr;
    }
    plist_t root = nullptr;
    plist_from_memory(bytes.data(), static_cast<std::uint32_t>(bytes.size()), &root);
    return PlistPtr(root);
}

std::string propertyListXML(plist_t root) {
    char* xml = nullptr;
    std::uint32_t length = 0;
    plist_to_xml(root, &xml, &length);
    std::string text = xml ? std::string(xml, length) : std::string();
    std::free(xml);
    return text;
}

} // namespace korvane
