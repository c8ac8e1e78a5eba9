#include "savedregistry/SnapshotCodec.h"

#include "base/FileIO.h"
#include "savedregistry/GuardedPropertyList.h"
#include "savedregistry/NodeIdentity.h"
#include "savedregistry/RegistryText.h"
#include "savedregistry/SavedRegistryLimits.h"
#include "scanner/LinuxTreeKeys.h"
#include "scanner/PropertyReaders.h"
#include "tools/PropertyList.h"

#include <array>
#include <optional>
#include <system_error>

namespace korvane {
namespace {

constexpr const char* kClassKey = "IOObjectClass";
constexpr const char* kChildrenKey = "IORegistryEntryChildren";
constexpr const char* kNameKey = "IORegistryEntryName";
constexpr const char* kLocationKey = "IORegistryEntryLocation";

// Keys ioreg adds about the entry itself rather than its properties.
constexpr std::array<std::string_view, 6> kBookkeepingKeys = {"IORegistryEntryID", "IOObjectRetainCount",
                                                              "IOServiceState",    "IOServiceBusyState",
                                                              "IOServiceBusyTime", "IOObjectInheritance"};

// An entry is a dictionary and a child array level each, so a tree at the
// depth limit with values nested to theirs stays well inside this.
constexpr int maximumPlistDepth = 2 * maximumSavedTreeDepth + maximumSavedValueDepth + 16;

std::optional<PropertyValue> valueFromPlist(plist_t node, int depth) {
    if (depth > maximumSavedValueDepth) {
        return std::nullopt;
    }
    switch (plist_get_node_type(node)) {
    case PLIST_BOOLEAN: {
        std::uint8_t value = 0;
        plist_get_bool_val(node, &value);
        return PropertyValue(std::int64_t{value ? 1 : 0});
    }
    case PLIST_UINT: {
        std::uint64_t value = 0;
        plist_get_uint_val(node, &value);
        return PropertyValue(static_cast<std::int64_t>(value));
    }
    case PLIST_STRING: {
        auto text = plistText(node);
        return text ? std::optional<PropertyValue>(PropertyValue(std::move(*text))) : std::nullopt;
    }
    case PLIST_DATA: {
        std::uint64_t length = 0;
        const auto* begin = reinterpret_cast<const std::uint8_t*>(plist_get_data_ptr(node, &length));
        return PropertyValue(begin ? ByteBuffer(begin, begin + length) : ByteBuffer());
    }
    case PLIST_ARRAY: {
        PropertyArray array;
        const std::uint32_t size = plist_array_get_size(node);
        array.reserve(size);
        for (std::uint32_t i = 0; i < size; ++i) {
            auto element = valueFromPlist(plist_array_get_item(node, i), depth + 1);
            if (!element) {
                return std::nullopt;
            }
            array.push_back(std::move(*element));
        }
        return PropertyValue(std::move(array));
    }
    case PLIST_DICT: {
        PropertyDictionary dictionary;
        const bool isReadable = forEachDictionaryItem(node, [&](std::string_view key, plist_t item) {
            auto element = valueFromPlist(item, depth + 1);
            if (!element || !isRegistryText(key)) {
                return false;
            }
            dictionary.insert_or_assign(std::string(key), std::move(*element));
            return true;
        });
        return isReadable ? std::optional<PropertyValue>(PropertyValue(std::move(dictionary))) : std::nullopt;
    }
    default:
        return std::nullopt;
    }
}

bool isBookkeepingKey(std::string_view key) {
    for (const auto bookkeeping : kBookkeepingKeys) {
        if (key == bookkeeping) {
            return true;
        }
    }
    return false;
}

void readEntry(plist_t entry, NativeUSBNode& node, int depth) {
    std::string entryName;
    std::string entryLocation;
    PropertyDictionary properties;
    plist_t children = nullptr;
    forEachDictionaryItem(entry, [&](std::string_view key, plist_t item) {
        if (key == kClassKey) {
            node.className = plistText(item).value_or(std::string());
        } else if (key == kNameKey) {
            entryName = plistText(item).value_or(std::string());
        } else if (key == kLocationKey) {
            entryLocation = plistText(item).value_or(std::string());
        } else if (key == kChildrenKey) {
            children = item;
        } else if (!isBookkeepingKey(key) && isKeptBySnapshot(key) && isRegistryText(key)) {
            if (auto value = valueFromPlist(item, 0)) {
                properties.insert_or_assign(std::string(key), std::move(*value));
            }
        }
        return true;
    });
    node.properties = std::move(properties);
    assignNodeIdentity(node, entryName, entryLocation);
    if (!children || depth + 1 >= maximumSavedTreeDepth) {
        return;
    }
    auto readChild = [&](plist_t child) {
        if (plist_get_node_type(child) == PLIST_DICT) {
            readEntry(child, node.addChild({}, {}, {}, {}), depth + 1);
        }
    };
    // With -r, ioreg gives an ancestor's children as one dictionary.
    if (plist_get_node_type(children) == PLIST_DICT) {
        readChild(children);
    } else if (plist_get_node_type(children) == PLIST_ARRAY) {
        const std::uint32_t size = plist_array_get_size(children);
        for (std::uint32_t i = 0; i < size; ++i) {
            readChild(plist_array_get_item(children, i));
        }
    }
}

bool isRegistryEntry(plist_t node) {
    return plist_get_node_type(node) == PLIST_DICT &&
           (plist_dict_get_item(node, kClassKey) || plist_dict_get_item(node, kNameKey) ||
            plist_dict_get_item(node, kChildrenKey));
}

plist_t plistFromValue(const PropertyValue& value);

plist_t plistFromDictionary(const PropertyDictionary& dictionary) {
    plist_t result = plist_new_dict();
    for (const auto& [key, element] : dictionary) {
        plist_dict_set_item(result, key.c_str(), plistFromValue(element));
    }
    return result;
}

plist_t plistFromValue(const PropertyValue& value) {
    if (const auto* text = value.text()) {
        return plist_new_string(text->c_str());
    }
    if (const auto* bytes = value.bytes()) {
        static const char kNothing = 0;
        return plist_new_data(bytes->empty() ? &kNothing : reinterpret_cast<const char*>(bytes->data()),
                              bytes->size());
    }
    if (const auto* number = value.number()) {
        return plist_new_uint(static_cast<std::uint64_t>(*number));
    }
    if (const auto* array = value.array()) {
        plist_t result = plist_new_array();
        for (const auto& element : *array) {
            plist_array_append_item(result, plistFromValue(element));
        }
        return result;
    }
    if (const auto* dictionary = value.dictionary()) {
        return plistFromDictionary(*dictionary);
    }
    return plistFromDictionary(normalizedDictionary(value));
}

plist_t plistFromEntry(const NativeUSBNode& node) {
    plist_t entry = plist_new_dict();
    for (const auto& [key, value] : node.properties.dictionary()) {
        if (isKeptBySnapshot(key)) {
            plist_dict_set_item(entry, key.c_str(), plistFromValue(value));
        }
    }
    plist_dict_set_item(entry, kClassKey, plist_new_string(node.className.c_str()));
    plist_dict_set_item(entry, kNameKey, plist_new_string(node.name.c_str()));
    if (!node.location.empty()) {
        plist_dict_set_item(entry, kLocationKey, plist_new_string(node.location.c_str()));
    }
    if (!node.children.empty()) {
        plist_t children = plist_new_array();
        for (const auto& child : node.children) {
            plist_array_append_item(children, plistFromEntry(*child));
        }
        plist_dict_set_item(entry, kChildrenKey, children);
    }
    return entry;
}

} // namespace

bool looksLikePropertyList(std::string_view bytes) {
    if (bytes.starts_with("bplist00")) {
        return true;
    }
    if (bytes.starts_with("\xEF\xBB\xBF")) {
        bytes.remove_prefix(3);
    }
    const std::size_t start = bytes.find_first_not_of(" \t\r\n");
    if (start == std::string_view::npos) {
        return false;
    }
    bytes.remove_prefix(start);
    return bytes.starts_with("<?xml") || bytes.starts_with("<!DOCTYPE plist") || bytes.starts_with("<plist");
}

std::unique_ptr<NativeUSBNode> parseSnapshot(std::string_view bytes) {
    const PlistPtr plist = parseGuardedPropertyList(bytes, maximumPlistDepth);
    if (!plist) {
        return nullptr;
    }
    std::vector<plist_t> entries;
    if (plist_get_node_type(plist.get()) == PLIST_ARRAY) {
        // ioreg -a with -r or -n lists each matching subtree at the top.
        const std::uint32_t size = plist_array_get_size(plist.get());
        for (std::uint32_t i = 0; i < size; ++i) {
            entries.push_back(plist_array_get_item(plist.get(), i));
        }
    } else {
        entries.push_back(plist.get());
    }
    std::erase_if(entries, [](plist_t entry) { return !isRegistryEntry(entry); });
    if (entries.empty()) {
        return nullptr;
    }
    if (entries.size() == 1) {
        auto root = std::make_unique<NativeUSBNode>(std::string(), std::string(), std::string(),
                                                    PropertyDictionary(), nullptr);
        readEntry(entries.front(), *root, 0);
        return root;
    }
    auto root = std::make_unique<NativeUSBNode>(std::string(), std::string(), std::string(),
                                                PropertyDictionary(), nullptr);
    for (plist_t entry : entries) {
        readEntry(entry, root->addChild({}, {}, {}, {}), 1);
    }
    return root;
}

std::string snapshotPropertyList(const NativeUSBNode& root) {
    const PlistPtr plist(plistFromEntry(root));
    return propertyListXML(plist.get());
}

void writeSnapshot(const NativeUSBNode& root, const std::filesystem::path& path) {
    const std::string xml = snapshotPropertyList(root);
    if (xml.empty()) {
        throw std::system_error(std::make_error_code(std::errc::not_enough_memory), "property list");
    }
    writeFileAtomically(path, xml);
}

} // namespace korvane
