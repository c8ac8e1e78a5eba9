#include "scanner/PropertyReaders.h"

#include "base/Text.h"

#include <algorithm>
#include <cstdio>
#include <limits>

namespace korvane {

namespace {

// Both give something that tests true and points to the value when the key
// has one: the dictionary's own value, or one read out for the caller.
const PropertyValue* lookup(std::string_view key, const PropertyDictionary& properties) {
    const auto it = properties.find(key);
    return it == properties.end() ? nullptr : &it->second;
}

std::optional<PropertyValue> lookup(std::string_view key, const NodeProperties& properties) {
    return properties.value(key);
}

std::optional<std::int64_t> intValue(const PropertyValue& value) {
    if (const auto* number = value.number()) {
        return *number;
    }
    if (const auto* bytes = value.bytes()) {
        return littleEndianValue(*bytes).value_or(0);
    }
    if (const auto* text = value.text()) {
        const std::string clean = trimmed(*text);
        const std::string_view view(clean);
        // Only a lower-case prefix: firmware writes "0x", and "0X" was never seen
        // to mean hex in a registry.
        if (view.starts_with("0x")) {
            return parseSignedInteger(view.substr(2), 16);
        }
        return parseSignedInteger(view, 10);
    }
    return std::nullopt;
}

std::optional<ByteBuffer> dataValue(const PropertyValue& value) {
    if (const auto* bytes = value.bytes()) {
        return *bytes;
    }
    if (const auto* number = value.number()) {
        // Numbers beyond 32 bits have no 4-byte form; keeping the low bits is
        // as good as any choice and never fails.
        return portData(static_cast<std::uint32_t>(*number));
    }
    return std::nullopt;
}

template <class Properties>
std::string registryNameOf(const Properties& properties, const std::string& fallbackClass) {
    for (const char* key : {"IOName", "name"}) {
        if (const auto value = lookup(key, properties)) {
            if (const auto* text = value->text(); text && !text->empty()) {
                return *text;
            }
        }
    }
    for (const char* key : {"name", "compatible"}) {
        if (const auto value = lookup(key, properties)) {
            if (const auto* bytes = value->bytes()) {
                if (auto text = stringFromNullTerminatedData(*bytes); text && !text->empty()) {
                    return *text;
                }
            }
        }
    }
    return fallbackClass;
}

template <class Properties> std::string registryLocationOf(const Properties& properties) {
    if (const auto value = lookup("location", properties)) {
        if (const auto* text = value->text(); text && !text->empty()) {
            return uppercased(*text);
        }
        if (const auto* bytes = value->bytes()) {
            if (auto text = stringFromNullTerminatedData(*bytes); text && !text->empty()) {
                return uppercased(*text);
            }
        }
    }
    for (const char* key : {"locationID", "port", "usb-port-number"}) {
        if (const auto number = intProperty(key, properties)) {
            char text[16];
            std::snprintf(text, sizeof text, "%08X",
                          static_cast<unsigned>(static_cast<std::uint32_t>(*number)));
            return text;
        }
    }
    return {};
}

// Plain text for text-form output; nesting is bounded so a hostile value
// can't exhaust the stack.
void appendPlainText(std::string& out, const PropertyValue& value, int depth) {
    constexpr int maximumDepth = 32;
    if (depth > maximumDepth) {
        out += "...";
        return;
    }
    if (const auto* text = value.text()) {
        out += *text;
    } else if (const auto* number = value.number()) {
        out += std::to_string(*number);
    } else if (const auto* bytes = value.bytes()) {
        out += '<';
        out += hexString(*bytes);
        out += '>';
    } else if (const auto* array = value.array()) {
        out += '(';
        for (std::size_t i = 0; i < array->size(); ++i) {
            if (i > 0) {
                out += ", ";
            }
            appendPlainText(out, (*array)[i], depth + 1);
        }
        out += ')';
    } else if (const auto* dictionary = value.dictionary()) {
        out += '{';
        for (const auto& [key, entry] : *dictionary) {
            out += key;
            out += " = ";
            appendPlainText(out, entry, depth + 1);
            out += "; ";
        }
        out += '}';
    } else if (const auto* keyed = value.keyedList()) {
        out += '{';
        for (const auto& [key, entry] : *keyed) {
            appendPlainText(out, key, depth + 1);
            out += " = ";
            appendPlainText(out, entry, depth + 1);
            out += "; ";
        }
        out += '}';
    }
}

} // namespace

std::optional<std::int64_t> parseSignedInteger(std::string_view text, int base) {
    bool isNegative = false;
    if (!text.empty() && (text.front() == '+' || text.front() == '-')) {
        isNegative = text.front() == '-';
        text.remove_prefix(1);
    }
    if (text.empty()) {
        return std::nullopt;
    }
    // Accumulate as a negative number so the most negative value fits.
    constexpr std::int64_t minimum = std::numeric_limits<std::int64_t>::min();
    std::int64_t value = 0;
    for (char c : text) {
        const int digit = hexDigitValue(c);
        if (digit < 0 || digit >= base) {
            return std::nullopt;
        }
        if (value < (minimum + digit) / base) {
            return std::nullopt;
        }
        value = value * base - digit;
    }
    if (!isNegative) {
        if (value == minimum) {
            return std::nullopt;
        }
        value = -value;
    }
    return value;
}

std::string plainTextForm(const PropertyValue& value) {
    std::string out;
    appendPlainText(out, value, 0);
    return out;
}

std::optional<std::string> stringFromNullTerminatedData(const ByteBuffer& data) {
    if (data.empty() || data.front() == 0) {
        return std::nullopt;
    }
    const auto end = std::find(data.begin(), data.end(), std::uint8_t{0});
    const std::string_view bytes(reinterpret_cast<const char*>(data.data()),
                                 static_cast<std::size_t>(end - data.begin()));
    // ASCII is a subset of UTF-8, so bytes that fail UTF-8 fail ASCII too.
    if (!isValidUTF8(bytes)) {
        return std::nullopt;
    }
    return std::string(bytes);
}

std::string registryName(const PropertyDictionary& properties, const std::string& fallbackClass) {
    return registryNameOf(properties, fallbackClass);
}

std::string registryName(const NodeProperties& properties, const std::string& fallbackClass) {
    return registryNameOf(properties, fallbackClass);
}

std::string registryLocation(const PropertyDictionary& properties) {
    return registryLocationOf(properties);
}

std::string registryLocation(const NodeProperties& properties) {
    return registryLocationOf(properties);
}

std::optional<std::int64_t> intProperty(std::string_view key, const PropertyDictionary& properties) {
    const auto* value = lookup(key, properties);
    return value ? intValue(*value) : std::nullopt;
}

std::optional<std::int64_t> intProperty(std::string_view key, const NodeProperties& properties) {
    const auto value = properties.value(key);
    return value ? intValue(*value) : std::nullopt;
}

std::optional<ByteBuffer> dataProperty(std::string_view key, const PropertyDictionary& properties) {
    const auto* value = lookup(key, properties);
    return value ? dataValue(*value) : std::nullopt;
}

std::optional<ByteBuffer> dataProperty(std::string_view key, const NodeProperties& properties) {
    const auto value = properties.value(key);
    return value ? dataValue(*value) : std::nullopt;
}

PropertyDictionary normalizedDictionary(const PropertyValue& value) {
    if (const auto* dictionary = value.dictionary()) {
        return *dictionary;
    }
    PropertyDictionary result;
    if (const auto* keyed = value.keyedList()) {
        for (const auto& [key, entry] : *keyed) {
            result.insert_or_assign(plainTextForm(key), entry);
        }
    }
    return result;
}

std::vector<const NativeUSBNode*> flatten(const NativeUSBNode& node) {
    // An explicit stack: snapshots from files can nest deeper than the call
    // stack allows.
    std::vector<const NativeUSBNode*> result;
    std::vector<const NativeUSBNode*> pending{&node};
    while (!pending.empty()) {
        const NativeUSBNode* current = pending.back();
        pending.pop_back();
        result.push_back(current);
        for (auto it = current->children.rbegin(); it != current->children.rend(); ++it) {
            pending.push_back(it->get());
        }
    }
    return result;
}

std::string baseName(std::string_view text) {
    if (const auto at = text.find('@'); at != std::string_view::npos) {
        return std::string(text.substr(0, at));
    }
    return trimmed(text);
}

} // namespace korvane
