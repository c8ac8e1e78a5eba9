#pragma once

#include "records/FileIO.h"
#include "records/USBControllerMap.h"
#include "support/FakeTool.h"
#include "tools/PropertyList.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <map>
#include <random>
#include <string>
#include <system_error>
#include <vector>

namespace korvane {

// Names table rows after their `name` field.
struct RowName {
    template <class Row> std::string operator()(const ::testing::TestParamInfo<Row>& row) const {
        return row.param.name;
    }
};

// A folder of its own under the system's temporary folder, gone afterwards.
class TemporaryFolder {
  public:
    TemporaryFolder()
        : path_(std::filesystem::temp_directory_path() /
                ("korvane-package-test-" +
                 std::to_string(std::chrono::steady_clock::now().time_since_epoch().count()) + "-" +
                 std::to_string(std::random_device()()))) {
        std::filesystem::create_directories(path_);
    }
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::filesystem::path& path() const { return path_; }

  private:
    std::filesystem::path path_;
};

inline void writeFile(const std::filesystem::path& path, const std::string& bytes) {
    std::ofstream(path, std::ios::binary) << bytes;
}

inline std::string fileText(const std::filesystem::path& path) {
    return readFileBytes(path).value_or("<unreadable>");
}

// A tool that prints `message` and exits with `status`.
inline std::string writeFakeTool(const std::filesystem::path& folder, const std::string& name,
                                 const std::string& message, int status) {
    return writeFakeTool(folder, name, "printf '%s\\n' '" + message + "'\nexit " + std::to_string(status));
}

inline USBPortMap makePort(std::string name, ByteBuffer data, std::int64_t connector = 3,
                           std::string location = "", std::string activeDevice = "") {
    return {std::move(name), std::move(location), connector, std::move(data), "", std::move(activeDevice)};
}

inline USBControllerMap makeController(std::string name, std::int64_t vendorID, std::int64_t deviceID,
                                       std::vector<USBPortMap> ports = {}) {
    return {std::move(name), "", vendorID, deviceID, "", "", "", std::move(ports)};
}

// A typed text form of a tree, so one comparison checks key sets, types and
// values: {key=value, ...} with keys sorted, "text", bare integers,
// true/false, <hex> for data.
inline std::string describe(plist_t node) {
    if (!node) {
        return "null";
    }
    switch (plist_get_node_type(node)) {
    case PLIST_DICT: {
        std::map<std::string, std::string> entries;
        plist_dict_iter it = nullptr;
        plist_dict_new_iter(node, &it);
        for (;;) {
            char* key = nullptr;
            plist_t value = nullptr;
            plist_dict_next_item(node, it, &key, &value);
            if (!key) {
                break;
            }
            entries[key] = describe(value);
            free(key);
        }
        free(it);
        std::string text = "{";
        for (const auto& [key, value] : entries) {
            text += (text.size() > 1 ? ", " : "") + key + "=" + value;
        }
        return text + "}";
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

inline std::vector<std::string> keysOf(plist_t dict) {
    std::vector<std::string> keys;
    if (!dict || plist_get_node_type(dict) != PLIST_DICT) {
        return keys;
    }
    plist_dict_iter it = nullptr;
    plist_dict_new_iter(dict, &it);
    for (char* key = nullptr; plist_dict_next_item(dict, it, &key, nullptr), key; key = nullptr) {
        keys.emplace_back(key);
        free(key);
    }
    free(it);
    std::sort(keys.begin(), keys.end());
    return keys;
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
