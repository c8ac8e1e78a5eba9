#include "package/RegistryTreeRedaction.h"

#include "base/ASCIIText.h"
#include "package/SensitiveTextRedaction.h"

#include <array>
#include <string_view>

namespace korvane {

namespace {

constexpr std::string_view mask = "XX-MASKED-XX";

// Parts of keys, in lower case, whose whole value identifies the machine or
// its user. Data values are here too: a MAC address or a platform UUID is
// stored as bytes, where no text rule sees it.
constexpr std::array<std::string_view, 9> identityKeyParts = {"serial",      "uuid",         "macaddress",
                                                              "mac-address", "system-id",    "username",
                                                              "localname",   "computername", "hostname"};

bool isIdentityKey(std::string_view key) {
    for (std::string_view part : identityKeyParts) {
        if (containsIgnoringASCIICase(key, part)) {
            return true;
        }
    }
    // NVRAM's logic board and ROM values: "MLB", "ROM" or "<guid>:MLB".
    const std::string lower = asciiLowercased(key);
    return lower == "mlb" || lower == "rom" || lower.ends_with(":mlb") || lower.ends_with(":rom");
}

void redactValue(PropertyValue& value, bool isIdentity);

void redactDictionary(PropertyDictionary& dictionary) {
    for (auto& [key, value] : dictionary) {
        redactValue(value, isIdentityKey(key));
    }
}

void redactValue(PropertyValue& value, bool isIdentity) {
    if (auto* text = std::get_if<std::string>(&value.value)) {
        *text = isIdentity ? std::string(mask) : redactSensitiveText(*text);
    } else if (auto* bytes = std::get_if<ByteBuffer>(&value.value)) {
        if (isIdentity) {
            *bytes = ByteBuffer(mask.begin(), mask.end());
        }
    } else if (auto* array = std::get_if<PropertyArray>(&value.value)) {
        for (auto& element : *array) {
            redactValue(element, isIdentity);
        }
    } else if (auto* dictionary = std::get_if<PropertyDictionary>(&value.value)) {
        redactDictionary(*dictionary);
    } else if (auto* keyed = std::get_if<PropertyKeyedList>(&value.value)) {
        for (auto& [key, element] : *keyed) {
            const std::string* keyText = key.text();
            redactValue(element, keyText && isIdentityKey(*keyText));
        }
    }
}

} // namespace

void redactSensitiveProperties(NativeUSBNode& root) {
    // A loop, not recursion, over the nodes: a saved tree may nest deeper
    // than the stack allows.
    std::vector<NativeUSBNode*> pending{&root};
    while (!pending.empty()) {
        NativeUSBNode* node = pending.back();
        pending.pop_back();
        redactDictionary(node->properties.editableDictionary());
        for (auto& child : node->children) {
            pending.push_back(child.get());
        }
    }
}

} // namespace korvane
