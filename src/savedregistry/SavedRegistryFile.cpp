#include "savedregistry/SavedRegistryFile.h"

#include "records/FileIO.h"
#include "savedregistry/SavedRegistryLimits.h"

namespace korvane {

std::optional<std::string> readSavedRegistryFile(const std::filesystem::path& path) {
    std::error_code error;
    const auto size = std::filesystem::file_size(path, error);
    if (error || size > kMaxSavedRegistryBytes) {
        return std::nullopt;
    }
    auto bytes = readFileBytes(path);
    if (!bytes || bytes->size() > kMaxSavedRegistryBytes) {
        return std::nullopt;
    }
    return bytes;
}

} // namespace korvane
