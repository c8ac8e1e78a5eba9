#pragma once

#include "records/USBControllerMap.h"
#include "records/USBPortMap.h"
#include "scanner/NativeUSBNode.h"
#include "scanner/PropertyValue.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace korvane {

// Typed readers over a node's properties, or a dictionary of them not yet in
// a node. Pure functions; none of them throws or fails: what can't be read
// gives no value.

std::optional<std::string> stringFromNullTerminatedData(const ByteBuffer& data);
std::string registryName(const PropertyDictionary& properties, const std::string& fallbackClass);
std::string registryName(const NodeProperties& properties, const std::string& fallbackClass);
std::string registryLocation(const PropertyDictionary& properties);
std::string registryLocation(const NodeProperties& properties);
std::optional<std::int64_t> intProperty(std::string_view key, const PropertyDictionary& properties);
std::optional<std::int64_t> intProperty(std::string_view key, const NodeProperties& properties);
std::optional<ByteBuffer> dataProperty(std::string_view key, const PropertyDictionary& properties);
std::optional<ByteBuffer> dataProperty(std::string_view key, const NodeProperties& properties);
PropertyDictionary normalizedDictionary(const PropertyValue& value);

// Text as a signed 64-bit integer in base 10 or 16: one optional leading "+"
// or "-", then digits only (either case in base 16). Any other character, no
// digit, or overflow give no value.
std::optional<std::int64_t> parseSignedInteger(std::string_view text, int base);

// A readable text form of any value, for places that search or key on text:
// a text as it is, a number in decimal, bytes as "<hex>", arrays and
// dictionaries in brackets.
std::string plainTextForm(const PropertyValue& value);

// The node followed by the flattening of each child: depth-first pre-order.
std::vector<const NativeUSBNode*> flatten(const NativeUSBNode& node);

// The part before the first "@" when there is one (untrimmed), else the whole
// text trimmed.
std::string baseName(std::string_view text);

// Names as a person reads them: case-insensitive, digit runs by value,
// deterministic on ties. True when `a` goes before `b`.
bool localizedStandardLess(std::string_view a, std::string_view b);

// Ports in the order every scanner hands them out: by port number (none
// counts as 0), then by name as a person reads it; stable otherwise.
void sortPortsByNumberThenName(std::vector<USBPortMap>& ports);

// Controllers in the order every scanner hands them out: by vendor, then
// device, then location and name as a person reads them; stable otherwise.
void sortControllersByIDsThenLocation(std::vector<USBControllerMap>& controllers);

} // namespace korvane
