#include "base/Text.h"
#include "package/PersonalityNames.h"
#include "package/SensitiveTextRedaction.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

// The sanitiser hands these whatever text lies in the work folder, so they
// must finish on any valid UTF-8 and give valid UTF-8 back.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    if (!korvane::isValidUTF8(bytes)) {
        return 0;
    }
    if (!korvane::isValidUTF8(korvane::redactSensitiveText(bytes))) {
        __builtin_trap();
    }
    if (!korvane::isValidUTF8(korvane::sanitizePersonalityName(bytes))) {
        __builtin_trap();
    }
    return 0;
}
