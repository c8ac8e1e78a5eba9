#pragma once

#include "base/FileIO.h"
#include "support/USBRecords.h"
#include "tools/PropertyList.h"

#include <gtest/gtest.h>
#include <map>
#include <string>
#include <vector>

namespace korvane {

inline std::string fileText(const std::filesystem::path& path) {
    return readFileBytes(path).value_or("<unreadable>");
}

// A property list tree as indented text, keys sorted, so one comparison checks
// key sets, types and values: "text", bare integers, true/false, <hex> data.
inline std::string plistText(plist_t node, int depth = 0) {
    const std::string indent(static_cast<std::size_t>(2 * depth), ' ');
    std::uint64_t length = 0;
    switch (node ? plist_get_node_type(node) : PLIST_NONE) {
    case PLIST_DICT: {
        std::map<std::string, std::string> entries;
        plist_dict_iter it = nullptr;
        plist_dict_new_iter(node, &it);
        char* key = nullptr;
        plist_t value = nullptr;
        while ((plist_dict_next_item(node, it, &key, &value), key)) {
            entries[key] = plistText(value, depth + 1);
            free(key);
        }
        free(it);
        std::string text = "{\n";
        for (const auto& [name, entry] : entries) {
            text += indent + "  " + name + " = " + entry + "\n";
        }
        return text + indent + "}";
    }
    case PLIST_STRING:
        return "\"" + std::string(plist_get_string_ptr(node, nullptr)) + "\"";
    case PLIST_UINT: {
        std::uint64_t value = 0;
        plist_get_uint_val(node, &value);
        return std::to_string(static_cast<std::int64_t>(value));
    }
    case PLIST_BOOLEAN:
        return plist_bool_val_is_true(node) ? "true" : "false";
    case PLIST_DATA: {
        const auto* bytes = reinterpret_cast<const std::uint8_t*>(plist_get_data_ptr(node, &length));
        return "<" + hexString(ByteBuffer(bytes, bytes + length)) + ">";
    }
    default:
        return "?";
    }
}

// The value at a path of dictionary keys, or null.
inline plist_t at(plist_t node, std::initializer_list<std::string> keys) {
    for (const auto& key : keys) {
        node = node && plist_get_node_type(node) == PLIST_DICT ? plist_dict_get_item(node, key.c_str())
                                                               : nullptr;
    }
    return node;
}

} // namespace korvane
