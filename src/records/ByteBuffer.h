#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace korvane {

using ByteBuffer = std::vector<std::uint8_t>;

// Each byte as two lower-case hex digits, no separator.
std::string hexString(const ByteBuffer& data);

// The little-endian unsigned value of the first bytes, at most four; further
// bytes are ignored. An empty buffer has no number.
std::optional<std::int64_t> portNumber(const ByteBuffer& data);

// The four bytes the registry stores a port number as, least significant first.
ByteBuffer portData(std::uint32_t number);

} // namespace korvane
