#pragma once

#include "scanner/RegistrySource.h"

#include <filesystem>
#include <memory>
#include <optional>
#include <stdexcept>

namespace korvane {

// What the scans read: this machine's registry, a saved registry tree
// (--registry), or the text of an ioreg dump read line by line (--ioreg).
struct RegistryChoice {
    std::optional<std::filesystem::path> registryFile;
    std::optional<std::filesystem::path> ioregFile;

    // Only this machine's registry changes while the program runs.
    bool isLive() const { return !registryFile && !ioregFile; }
};

// A chosen file that can't serve; the message is one line that names it.
class RegistryChoiceError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

// The registry the scans read for this choice. An ioreg text dump read line by
// line gives an empty registry: the live scan finds nothing, so the scanner
// falls back on the dump, as it would on a machine without controllers.
// Throws RegistryChoiceError for a file that isn't there or is no saved registry.
std::shared_ptr<const RegistrySource> openRegistry(const RegistryChoice& choice);

} // namespace korvane
