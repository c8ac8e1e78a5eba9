#include "savedregistry/SavedRegistry.h"

#include "base/FileIO.h"
#include "savedregistry/IORegTextParser.h"
#include "savedregistry/SavedRegistryLimits.h"
#include "savedregistry/SnapshotCodec.h"

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

std::optional<std::string> readSavedRegistryFile(const std::filesystem::path& path) {
    std::error_code error;
    const auto size = std::filesystem::file_size(path, error);
    if (error || size > maximumSavedRegistryBytes) {
        return std::nullopt;
    }
    auto bytes = readFileBytes(path);
    if (!bytes || bytes->size() > maximumSavedRegistryBytes) {
        return std::nullopt;
    }
    return bytes;
}

SavedRegistryFileSource::SavedRegistryFileSource(std::filesystem::path path, Parse parse)
    : path_(std::move(path)), parse_(std::move(parse)) {}

std::unique_ptr<NativeUSBNode> SavedRegistryFileSource::copyRoot() const {
    auto bytes = readSavedRegistryFile(path_);
    return bytes ? parse_(std::move(*bytes)) : nullptr;
}

std::unique_ptr<RegistrySource> openSavedRegistry(const std::filesystem::path& path) {
    const auto bytes = readSavedRegistryFile(path);
    if (!bytes) {
        return nullptr;
    }
    // Bytes that give no tree are refused now, with the reason the caller can
    // ask whyNoRegistryIn for, rather than as an empty registry later.
    if (!parseSavedRegistry(*bytes)) {
        return nullptr;
    }
    switch (savedRegistryFormat(*bytes)) {
    case SavedRegistryFormat::Snapshot:
        return std::make_unique<SavedRegistryFileSource>(
            path, [](std::string text) { return parseSnapshot(text); });
    case SavedRegistryFormat::IORegText:
        return std::make_unique<SavedRegistryFileSource>(path, parseIORegText);
    case SavedRegistryFormat::Unknown:
        break;
    }
    return nullptr;
}

std::unique_ptr<NativeUSBNode> parseSavedRegistry(std::string bytes) {
    switch (savedRegistryFormat(bytes)) {
    case SavedRegistryFormat::Snapshot:
        return parseSnapshot(bytes);
    case SavedRegistryFormat::IORegText:
        return parseIORegText(std::move(bytes));
    case SavedRegistryFormat::Unknown:
        break;
    }
    return nullptr;
}

} // namespace korvane
