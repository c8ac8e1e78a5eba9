#pragma once

#include "scanner/RegistrySource.h"

#include <filesystem>
#include <memory>
#include <string_view>

namespace korvane {

enum class SavedRegistryFormat { Unknown, Snapshot, IORegText };

// Tells the format by content, not by the file name: a property list start
// ("bplist00", an XML declaration, doctype or <plist>) is a snapshot; a text
// with ioreg node lines is a text dump.
SavedRegistryFormat savedRegistryFormat(std::string_view bytes);

// The source for a saved registry file; nullptr when the file can't be read
// or is in neither format. Never throws.
std::unique_ptr<RegistrySource> openSavedRegistry(const std::filesystem::path& path);

// The tree of saved registry bytes in either format; nullptr for anything
// else.
std::unique_ptr<NativeUSBNode> parseSavedRegistry(std::string_view bytes);

} // namespace korvane
