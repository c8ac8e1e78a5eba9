#include "savedregistry/IORegTextSource.h"

#include "savedregistry/IORegTextParser.h"
#include "savedregistry/SavedRegistryFile.h"

namespace korvane {

IORegTextSource::IORegTextSource(std::filesystem::path path) : path_(std::move(path)) {}

std::unique_ptr<NativeUSBNode> IORegTextSource::copyRoot() const {
    const auto bytes = readSavedRegistryFile(path_);
    return bytes ? parseIORegText(*bytes) : nullptr;
}

} // namespace korvane
