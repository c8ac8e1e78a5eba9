#pragma once

#include "base/ByteBuffer.h"

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace korvane {

struct PropertyValue;

using PropertyArray = std::vector<PropertyValue>;
// Transparent ordering, so lookups by literal or string_view key allocate nothing.
using PropertyDictionary = std::map<std::string, PropertyValue, std::less<>>;
// A dictionary whose keys are not (all) text, as a registry may hand over;
// normalizedDictionary() turns it into a PropertyDictionary.
using PropertyKeyedList = std::vector<std::pair<PropertyValue, PropertyValue>>;

// One registry property value. Booleans arrive as the numbers 0 and 1.
struct PropertyValue {
    std::variant<std::string, ByteBuffer, std::int64_t, PropertyArray, PropertyDictionary, PropertyKeyedList>
        value;

    PropertyValue() : value(std::int64_t{0}) {}
    PropertyValue(std::string text) : value(std::move(text)) {}
    PropertyValue(const char* text) : value(std::string(text)) {}
    PropertyValue(ByteBuffer bytes) : value(std::move(bytes)) {}
    PropertyValue(std::int64_t number) : value(number) {}
    PropertyValue(int number) : value(std::int64_t{number}) {}
    PropertyValue(PropertyArray array) : value(std::move(array)) {}
    PropertyValue(PropertyDictionary dictionary) : value(std::move(dictionary)) {}
    PropertyValue(PropertyKeyedList keyed) : value(std::move(keyed)) {}

    const std::string* text() const { return std::get_if<std::string>(&value); }
    const ByteBuffer* bytes() const { return std::get_if<ByteBuffer>(&value); }
    const std::int64_t* number() const { return std::get_if<std::int64_t>(&value); }
    const PropertyArray* array() const { return std::get_if<PropertyArray>(&value); }
    const PropertyDictionary* dictionary() const { return std::get_if<PropertyDictionary>(&value); }
    const PropertyKeyedList* keyedList() const { return std::get_if<PropertyKeyedList>(&value); }

    bool operator==(const PropertyValue&) const = default;
};

} // namespace korvane
