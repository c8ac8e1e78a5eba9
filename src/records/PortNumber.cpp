#include "records/PortNumber.h"

#include "base/Text.h"

#include <algorithm>
#include <climits>
#include <unicode/uchar.h>
#include <unicode/utf8.h>

namespace korvane {

ByteBuffer portData(std::uint32_t number) {
    return {static_cast<std::uint8_t>(number), static_cast<std::uint8_t>(number >> 8),
            static_cast<std::uint8_t>(number >> 16), static_cast<std::uint8_t>(number >> 24)};
}

std::uint32_t inferredPortNumberFromName(std::string_view name) {
    const std::string upper = uppercased(name);
    const auto* s = reinterpret_cast<const std::uint8_t*>(upper.data());
    const auto length = static_cast<std::int32_t>(std::min<std::size_t>(upper.size(), INT32_MAX));
    std::uint64_t number = 0;
    std::int32_t i = 0;
    while (i < length) {
        UChar32 c;
        U8_NEXT(s, i, length, c);
        if (c < 0 || u_getIntPropertyValue(c, UCHAR_NUMERIC_TYPE) == U_NT_NONE) {
            continue;
        }
        // Only ASCII digits read as a decimal number; any other numeric
        // character spoils the whole run, as does a value past 32 bits.
        if (c < '0' || c > '9' || number > 0xFFFFFFFFULL) {
            number = 0;
            break;
        }
        number = number * 10 + static_cast<std::uint64_t>(c - '0');
    }
    if (number > 0xFFFFFFFFULL) {
        number = 0;
    }
    if (upper.starts_with("SS")) {
        number += 16;
    }
    return static_cast<std::uint32_t>(number);
}

} // namespace korvane
