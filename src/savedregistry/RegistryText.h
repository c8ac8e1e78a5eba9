#pragma once

#include "base/Text.h"

#include <string_view>

namespace korvane {

// Text a registry can hold: valid UTF-8 without NUL bytes. The registry keeps
// its strings NUL-terminated, so a NUL inside one means damaged input, and a
// property list writer would cut the text there.
inline bool isRegistryText(std::string_view bytes) {
    return bytes.find('\0') == std::string_view::npos && isValidUTF8(bytes);
}

} // namespace korvane
