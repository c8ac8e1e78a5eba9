#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace korvane {

// The file's bytes, or none when it can't be read.
std::optional<std::string> readFileBytes(const std::filesystem::path& path);

// Writes through a temporary file beside the target that then replaces it, so
// the target is there whole or not at all. An existing target keeps its
// permissions. Throws std::system_error with the platform's wording.
void writeFileAtomically(const std::filesystem::path& path, std::string_view bytes);

} // namespace korvane
