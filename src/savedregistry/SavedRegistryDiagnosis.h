#pragma once

#include "savedregistry/SavedRegistry.h"
#include "scanner/NativeUSBNode.h"

#include <string>

namespace korvane {

// Why a saved registry gave no controller, in the user's words: what kind of
// file it looked like and what it lacks that a controller is found by (an
// IOPCIDevice of the xHCI class with a USB host service below it). For
// instance an ioreg of the IOUSB plane lists USB devices only. Pure.
std::string whyNoControllerIn(const NativeUSBNode& root, SavedRegistryFormat format);

} // namespace korvane
