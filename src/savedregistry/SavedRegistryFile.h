#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace korvane {

// The bytes of a saved registry file; none when it can't be read or is larger
// than any real registry dump could be.
std::optional<std::string> readSavedRegistryFile(const std::filesystem::path& path);

} // namespace korvane
