#pragma once

#include "scanner/RegistrySource.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace korvane {

enum class SavedRegistryFormat { Unknown, Snapshot, IORegText };

// Tells the format by content, not by the file name: a property list start
// ("bplist00", an XML declaration, doctype or <plist>) is a snapshot; a text
// with ioreg node lines is a text dump.
SavedRegistryFormat savedRegistryFormat(std::string_view bytes);

// The bytes of a saved registry or dump file; none when it can't be read or is
// larger than maximumSavedRegistryBytes, more than any real dump could be.
std::optional<std::string> readSavedRegistryFile(const std::filesystem::path& path);

// A registry saved in a file. The file is read afresh on each copyRoot() and
// its bytes handed over to `parse`; a missing, oversized or unreadable file
// gives nullptr.
class SavedRegistryFileSource final : public RegistrySource {
  public:
    using Parse = std::function<std::unique_ptr<NativeUSBNode>(std::string bytes)>;

    SavedRegistryFileSource(std::filesystem::path path, Parse parse);
    std::unique_ptr<NativeUSBNode> copyRoot() const override;

  private:
    std::filesystem::path path_;
    Parse parse_;
};

// The source for a saved registry file in the format its bytes show; nullptr
// when the file can't be read or its bytes give no tree (whyNoRegistryIn of
// SavedRegistryDiagnosis.h says why). Never throws.
std::unique_ptr<RegistrySource> openSavedRegistry(const std::filesystem::path& path);

// The tree of saved registry bytes in either format; nullptr for anything
// else.
std::unique_ptr<NativeUSBNode> parseSavedRegistry(std::string bytes);

} // namespace korvane
