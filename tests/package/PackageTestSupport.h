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
    switch (node ? plist_get_node_type(node) : PLIST_NONE) {
    case PLIST_DICT: {
        std::map<std::string, std::string> entries;
        plist_dict_iter it = nullptr;
        plist_dict_new_iter(node, &it);
        for (char* key = nullptr;; key = nullptr) {
            plist_t value = nullptr;
            plist_dict_next_item(node, it, &key, &value);
            if (!key) {
                break;
            }
            entries[key] = plistText(value, depth + 1);
            free(key);
        }
        free(it);
        std::string text = "{\n";
        for (const auto& [key, value] : entries) {
            text += indent + "  " + key + " = " + value + "\n";
        }
        return text + indent + "}";
    }
    case PLIST_STRING: {
        char* text = nullptr;
        plist_get_string_val(node, &text);
        std::string result = "\"" + std::string(text ? text : "") + "\"";
        free(text);
        return result;
    }
    case PLIST_UINT: {
        std::uint64_t value = 0;
        plist_get_uint_val(node, &value);
        return std::to_string(static_cast<std::int64_t>(value));
    }
    case PLIST_BOOLEAN: {
        std::uint8_t value = 0;
        plist_get_bool_val(node, &value);
        return value ? "true" : "false";
    }
    case PLIST_DATA: {
        char* bytes = nullptr;
        std::uint64_t length = 0;
        plist_get_data_val(node, &bytes, &length);
        const std::string hex = hexString(ByteBuffer(bytes, bytes + length));
        free(bytes);
        return "<" + hex + ">";
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
