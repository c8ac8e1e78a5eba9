#pragma once

#include "scanner/RegistrySource.h"

#include <filesystem>

namespace korvane {

// A registry saved as a snapshot file (XML or binary property list in the
// shape `ioreg -a` writes). The file is read afresh on each copyRoot(); a
// missing, oversized or unreadable file gives nullptr.
class SnapshotFileSource : public RegistrySource {
public:
    explicit SnapshotFileSource(std::filesystem::path path);
    std::unique_ptr<NativeUSBNode> copyRoot() const override;

private:
    std::filesystem::path path_;
};

} // namespace korvane
