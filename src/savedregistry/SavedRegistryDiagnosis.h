#pragma once

#include "savedregistry/SavedRegistry.h"
#include "scanner/NativeUSBNode.h"

#include <optional>
#include <string>
#include <string_view>

namespace korvane {

// Why a saved registry gave no controller, in the user's words: what kind of
// file it looked like and what it lacks that a controller is found by (an
// IOPCIDevice of the xHCI class with a USB host service below it). For
// instance an ioreg of the IOUSB plane lists USB devices only. Pure.
std::string whyNoControllerIn(const NativeUSBNode& root, SavedRegistryFormat format);

// Why saved bytes give no registry tree at all, in the user's words and with
// how to save a readable one: what the file is instead ("an IORegistryExplorer
// archive (.ioreg) ...", "a property list that is damaged (cut short?) ...").
// None when the bytes give a tree. Pure; never throws.
std::optional<std::string> whyNoRegistryIn(std::string_view bytes);

} // namespace korvane
