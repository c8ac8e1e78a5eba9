#pragma once

#include "scanner/NativeUSBNode.h"

#include <optional>
#include <string>

namespace korvane {

// The model a registry names for its own machine: the platform node's
// (IOPlatformExpertDevice) `model`, trimmed. None when the tree has no such
// node, or its model is blank, not printable or longer than SMBIOS holds.
std::optional<std::string> platformModel(const NativeUSBNode& root);

} // namespace korvane
