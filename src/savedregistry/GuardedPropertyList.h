#pragma once

#include "tools/PropertyList.h"

#include <cstdlib>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace korvane {

// Reading property lists that come from anywhere (saved registries, packages
// someone else made) without handing libplist what it can't survive.

// The list in XML or binary bytes; null when they are no property list, are
// larger than maximumSavedRegistryBytes, nest deeper than `maximumDepth`, or
// (binary) would expand into far more objects than their size can honestly
// hold (see BinaryPlistGuard.h).
PlistPtr parseGuardedPropertyList(std::string_view bytes, int maximumDepth);

// A string node's text when it is registry text (valid UTF-8, no NUL); none
// for any other node. Safe where plist_get_string_val would assert.
std::optional<std::string> plistText(plist_t node);

// Calls visit(key, item) for each item of a dictionary node, in its order,
// until visit returns false. False when the walk stopped early or the node
// can't be walked.
template <typename Visit> bool forEachDictionaryItem(plist_t dictionary, Visit visit) {
    struct FreeWithFree {
        void operator()(char* text) const { std::free(text); }
    };
    plist_dict_iter iterator = nullptr;
    plist_dict_new_iter(dictionary, &iterator);
    if (!iterator) {
        return false;
    }
    bool isComplete = true;
    while (true) {
        char* rawKey = nullptr;
        plist_t item = nullptr;
        plist_dict_next_item(dictionary, iterator, &rawKey, &item);
        std::unique_ptr<char, FreeWithFree> key(rawKey);
        if (!item) {
            break;
        }
        if (!key || !visit(std::string_view(key.get()), item)) {
            isComplete = false;
            break;
        }
    }
    std::free(iterator);
    return isComplete;
}

} // namespace korvane
