#pragma once

#include "scanner/NativeUSBNode.h"

#include <memory>
#include <string_view>

namespace korvane {

// The registry tree of an `ioreg -l -w0` text dump, or of a dump made without
// -l (node lines only, so no properties). Reads raw bytes: a value that isn't
// valid UTF-8 or can't be read is left out, never its node. Several top-level
// entries are gathered under one unnamed root. No node line gives nullptr.
// Linear in the size of the text; never throws.
std::unique_ptr<NativeUSBNode> parseIORegText(std::string_view bytes);

// True when the bytes hold at least one ioreg node line ("+-o " after the
// indent cells at the start of a line).
bool looksLikeIORegText(std::string_view bytes);

} // namespace korvane
