#include "platform/Environment.h"

#include <cstdlib>

namespace korvane {

Environment Environment::process() {
    return {[](std::string_view name) -> std::optional<std::string> {
        const char* value = std::getenv(std::string(name).c_str());
        if (!value || !*value) {
            return std::nullopt;
        }
        return std::string(value);
    }};
}

} // namespace korvane
