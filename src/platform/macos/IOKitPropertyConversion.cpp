#include "platform/macos/IOKitPropertyConversion.h"

#include <vector>

namespace korvane {

namespace {

// The registry nests a few levels at most (a port table in a personality);
// anything deeper is not a registry value.
constexpr int maxNesting = 64;

std::optional<PropertyValue> convert(CFTypeRef value, int depth);

struct DictionaryCollector {
    int depth;
    PropertyDictionary textKeyed;
    PropertyKeyedList otherKeyed;
    bool hasOtherKeys = false;
};

void collectEntry(const void* key, const void* value, void* context) {
    auto& collector = *static_cast<DictionaryCollector*>(context);
    auto converted = convert(static_cast<CFTypeRef>(value), collector.depth + 1);
    if (!converted) {
        return;
    }
    CFTypeRef keyRef = static_cast<CFTypeRef>(key);
    if (CFGetTypeID(keyRef) == CFStringGetTypeID()) {
        if (auto text = textFromCF(static_cast<CFStringRef>(keyRef))) {
            collector.textKeyed.emplace(*text, *converted);
            collector.otherKeyed.emplace_back(PropertyValue(*text), std::move(*converted));
            return;
        }
    }
    if (auto keyValue = convert(keyRef, collector.depth + 1)) {
        collector.hasOtherKeys = true;
        collector.otherKeyed.emplace_back(std::move(*keyValue), std::move(*converted));
    }
}

std::optional<PropertyValue> convert(CFTypeRef value, int depth) {
    if (!value || depth > maxNesting) {
        return std::nullopt;
    }
    const CFTypeID type = CFGetTypeID(value);
    if (type == CFStringGetTypeID()) {
        if (auto text = textFromCF(static_cast<CFStringRef>(value))) {
            return PropertyValue(std::move(*text));
        }
        return std::nullopt;
    }
    if (type == CFDataGetTypeID()) {
        auto data = static_cast<CFDataRef>(value);
        const UInt8* bytes = CFDataGetBytePtr(data);
        const CFIndex length = CFDataGetLength(data);
        return PropertyValue(bytes ? ByteBuffer(bytes, bytes + length) : ByteBuffer{});
    }
    if (type == CFBooleanGetTypeID()) {
        return PropertyValue(std::int64_t{CFBooleanGetValue(static_cast<CFBooleanRef>(value)) ? 1 : 0});
    }
    if (type == CFNumberGetTypeID()) {
        std::int64_t number = 0;
        CFNumberGetValue(static_cast<CFNumberRef>(value), kCFNumberSInt64Type, &number);
        return PropertyValue(number);
    }
    if (type == CFArrayGetTypeID()) {
        auto array = static_cast<CFArrayRef>(value);
        PropertyArray items;
        const CFIndex count = CFArrayGetCount(array);
        for (CFIndex i = 0; i < count; ++i) {
            if (auto item = convert(CFArrayGetValueAtIndex(array, i), depth + 1)) {
                items.push_back(std::move(*item));
            }
        }
        return PropertyValue(std::move(items));
    }
    if (type == CFDictionaryGetTypeID()) {
        DictionaryCollector collector{depth, {}, {}, false};
        CFDictionaryApplyFunction(static_cast<CFDictionaryRef>(value), collectEntry, &collector);
        if (collector.hasOtherKeys) {
            return PropertyValue(std::move(collector.otherKeyed));
        }
        return PropertyValue(std::move(collector.textKeyed));
    }
    return std::nullopt;
}

} // namespace

std::optional<std::string> textFromCF(CFStringRef string) {
    if (!string) {
        return std::nullopt;
    }
    if (const char* direct = CFStringGetCStringPtr(string, kCFStringEncodingUTF8)) {
        return std::string(direct);
    }
    const CFIndex length = CFStringGetLength(string);
    const CFIndex capacity = CFStringGetMaximumSizeForEncoding(length, kCFStringEncodingUTF8) + 1;
    std::vector<char> buffer(static_cast<std::size_t>(capacity), '\0');
    if (!CFStringGetCString(string, buffer.data(), capacity, kCFStringEncodingUTF8)) {
        return std::nullopt;
    }
    return std::string(buffer.data());
}

std::optional<PropertyValue> propertyValueFromCF(CFTypeRef value) {
    return convert(value, 0);
}

PropertyDictionary propertyDictionaryFromCF(CFDictionaryRef dictionary) {
    if (!dictionary) {
        return {};
    }
    auto converted = convert(dictionary, 0);
    if (converted && converted->dictionary()) {
        return *converted->dictionary();
    }
    return {};
}

} // namespace korvane
