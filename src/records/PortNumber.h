#pragma once

#include "base/ByteBuffer.h"

#include <cstdint>
#include <optional>
#include <string_view>

namespace korvane {

// A port's number as its four bytes of port data hold it. Empty data has no
// number.
inline std::optional<std::int64_t> portNumber(const ByteBuffer& data) {
    return littleEndianValue(data);
}

// The four bytes the registry stores a port number as, least significant first.
ByteBuffer portData(std::uint32_t number);

// A port's number from the digits of its name, for a port whose registry entry
// gives none: "HS03" is 3, and an "SS" port, the SuperSpeed half that follows
// the USB 2 ports, counts 16 more ("SS02" is 18). A name whose numeric
// characters aren't all ASCII digits ("HS²"), or whose digits pass 32 bits,
// reads as having no digits. Upper-cases the name first, with full Unicode
// rules ("ß" reads as "SS").
std::uint32_t inferredPortNumberFromName(std::string_view name);

} // namespace korvane
