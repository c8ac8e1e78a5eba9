#pragma once

#include "tools/PropertyList.h"

#include <cstdlib>
#include <string>

namespace korvane {

// A binary property list of one text entry, as macOS tools write them.
inline std::string binaryPlist(const char* key, const char* value) {
    PlistPtr root(plist_new_dict());
    plist_dict_set_item(root.get(), key, plist_new_string(value));
    char* bytes = nullptr;
    std::uint32_t length = 0;
    plist_to_bin(root.get(), &bytes, &length);
    std::string result(bytes, length);
    std::free(bytes);
    return result;
}

} // namespace korvane
