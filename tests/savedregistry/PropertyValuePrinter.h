#pragma once

#include "scanner/PropertyValue.h"

#include <iomanip>
#include <ostream>

namespace korvane {

// Lets failing expectations show values in ioreg's own notation.
inline void PrintTo(const PropertyValue& value, std::ostream* out) {
    if (const auto* text = value.text()) {
        *out << '"' << *text << '"';
    } else if (const auto* number = value.number()) {
        *out << *number;
    } else if (const auto* bytes = value.bytes()) {
        *out << '<' << std::hex << std::setfill('0');
        for (auto byte : *bytes) {
            *out << std::setw(2) << static_cast<int>(byte);
        }
        *out << std::dec << '>';
    } else if (const auto* array = value.array()) {
        *out << '(';
        for (std::size_t i = 0; i < array->size(); ++i) {
            *out << (i ? "," : "");
            PrintTo((*array)[i], out);
        }
        *out << ')';
    } else if (const auto* dictionary = value.dictionary()) {
        *out << '{';
        bool isFirst = true;
        for (const auto& [key, element] : *dictionary) {
            *out << (isFirst ? "" : ",") << '"' << key << "\"=";
            PrintTo(element, out);
            isFirst = false;
        }
        *out << '}';
    } else {
        *out << "{keyed list}";
    }
}

} // namespace korvane
