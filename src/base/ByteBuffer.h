#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace korvane {

using ByteBuffer = std::vector<std::uint8_t>;

// Each byte as two lower-case hex digits, no separator.
std::string hexString(const ByteBuffer& data);

// The registry's way of storing a number in bytes: the unsigned value of the
// first bytes, least significant first, at most four; further bytes are
// ignored. An empty buffer has no value.
std::optional<std::int64_t> littleEndianValue(const ByteBuffer& data);

} // namespace korvane
