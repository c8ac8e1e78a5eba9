#pragma once

#include "base/ByteBuffer.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unicode/unistr.h>
#include <vector>

namespace korvane {

// Readers of property values in a stretch of a saved dump's text: `"key" =
// <hex>` and `"key" = 0x1f` / `= 31` lines of ioreg text, and <key>/<data> or
// <key>/<integer> fragments of an XML property list. Keys match in any case.
// Pure functions; none of them fails: what can't be read gives no value.

// The hex digits of the first key that has a byte value, blanks removed (XML
// data comes back as lower-case hex). A key whose value is a lone blank ends
// the search with the empty text.
std::optional<std::string> firstPropertyHex(const std::vector<std::string>& keys, std::string_view text);
std::optional<std::string> firstPropertyHex(const std::vector<std::string>& keys,
                                            const icu::UnicodeString& text);

// The first four bytes of hex text as a little-endian unsigned 32-bit value:
// "86800000" and "8680" are both 0x8086. Fewer than four digits give none.
std::optional<std::int64_t> decodeLittleEndianHex(const std::optional<std::string>& hex);

// All bytes of hex text; fewer than eight digits (a value of three bytes or
// less) count as absent.
std::optional<ByteBuffer> dataFromIORegHex(const std::optional<std::string>& hex);

// The first key's number, hex ("0x..") tried before decimal for each key.
std::optional<std::int64_t> firstIntegerProperty(const std::vector<std::string>& keys, std::string_view text);
std::optional<std::int64_t> firstIntegerProperty(const std::vector<std::string>& keys,
                                                 const icu::UnicodeString& text);

// A port's number from its location: the first byte counted from the
// controller's smallest first byte, times 16, plus the upper half of the
// second byte. Below 1 gives none.
std::optional<ByteBuffer> inferredPortData(std::string_view location, std::int64_t baseLocationByte);

// `text` with every "0x" and "0X" taken out, in one pass from the left.
std::string withoutHexPrefixes(std::string_view text);

} // namespace korvane
