#include "savedregistry/SavedRegistry.h"

#include "savedregistry/IORegTextParser.h"
#include "savedregistry/IORegTextSource.h"
#include "savedregistry/SavedRegistryFile.h"
#include "savedregistry/SnapshotCodec.h"
#include "savedregistry/SnapshotFileSource.h"

namespace korvane {

SavedRegistryFormat savedRegistryFormat(std::string_view bytes) {
    if (looksLikePropertyList(bytes)) {
        return SavedRegistryFormat::Snapshot;
    }
    if (looksLikeIORegText(bytes)) {
        return SavedRegistryFormat::IORegText;
    }
    return SavedRegistryFormat::Unknown;
}

std::unique_ptr<RegistrySource> openSavedRegistry(const std::filesystem::path& path) {
    const auto bytes = readSavedRegistryFile(path);
    if (!bytes) {
        return nullptr;
    }
    switch (savedRegistryFormat(*bytes)) {
    case SavedRegistryFormat::Snapshot:
        return std::make_unique<SnapshotFileSource>(path);
    case SavedRegistryFormat::IORegText:
        return std::make_unique<IORegTextSource>(path);
    case SavedRegistryFormat::Unknown:
        break;
    }
    return nullptr;
}

std::unique_ptr<NativeUSBNode> parseSavedRegistry(std::string_view bytes) {
    switch (savedRegistryFormat(bytes)) {
    case SavedRegistryFormat::Snapshot:
        return parseSnapshot(bytes);
    case SavedRegistryFormat::IORegText:
        return parseIORegText(bytes);
    case SavedRegistryFormat::Unknown:
        break;
    }
    return nullptr;
}

} // namespace korvane
