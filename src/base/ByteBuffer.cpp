#include "base/ByteBuffer.h"

namespace korvane {

std::string hexString(const ByteBuffer& data) {
    static constexpr char digits[] = "0123456789abcdef";
    std::string text;
    text.reserve(data.size() * 2);
    for (std::uint8_t byte : data) {
        text.push_back(digits[byte >> 4]);
        text.push_back(digits[byte & 0x0f]);
    }
    return text;
}

std::optional<std::int64_t> littleEndianValue(const ByteBuffer& data) {
    if (data.empty()) {
        return std::nullopt;
    }
    std::uint32_t value = 0;
    const std::size_t count = data.size() < 4 ? data.size() : 4;
    for (std::size_t i = 0; i < count; ++i) {
        value |= static_cast<std::uint32_t>(data[i]) << (8 * i);
    }
    return static_cast<std::int64_t>(value);
}

} // namespace korvane
