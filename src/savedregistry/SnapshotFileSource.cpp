#include "savedregistry/SnapshotFileSource.h"

#include "savedregistry/SavedRegistryFile.h"
#include "savedregistry/SnapshotCodec.h"

namespace korvane {

SnapshotFileSource::SnapshotFileSource(std::filesystem::path path) : path_(std::move(path)) {}

std::unique_ptr<NativeUSBNode> SnapshotFileSource::copyRoot() const {
    const auto bytes = readSavedRegistryFile(path_);
    return bytes ? parseSnapshot(*bytes) : nullptr;
}

} // namespace korvane
