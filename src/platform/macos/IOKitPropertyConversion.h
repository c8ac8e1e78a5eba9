#pragma once

#include "scanner/PropertyValue.h"

#include <CoreFoundation/CoreFoundation.h>
#include <optional>
#include <string>

namespace korvane {

// CoreFoundation property values as registry property values: strings as
// text, data as bytes, numbers and booleans as integers, arrays and
// dictionaries (keys of another kind kept as a keyed list). Kinds the
// registry doesn't use give no value; nesting is bounded.
std::optional<PropertyValue> propertyValueFromCF(CFTypeRef value);

// All of a dictionary's text-keyed entries.
PropertyDictionary propertyDictionaryFromCF(CFDictionaryRef dictionary);

// The string as UTF-8, or no value.
std::optional<std::string> textFromCF(CFStringRef string);

} // namespace korvane
