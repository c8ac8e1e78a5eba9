#pragma once

#include "scanner/RegistrySource.h"

#include <filesystem>

namespace korvane {

// A registry saved as the text `ioreg -l -w0` prints (or plain `ioreg`, which
// gives the tree without properties). The file is read afresh on each
// copyRoot(); a missing, oversized or unreadable file gives nullptr.
class IORegTextSource : public RegistrySource {
public:
    explicit IORegTextSource(std::filesystem::path path);
    std::unique_ptr<NativeUSBNode> copyRoot() const override;

private:
    std::filesystem::path path_;
};

} // namespace korvane
