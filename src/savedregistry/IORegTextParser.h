#pragma once

#include "scanner/NativeUSBNode.h"

#include <memory>
#include <string>
#include <string_view>

namespace korvane {

// The registry tree of an `ioreg -l -w0` text dump, or of a dump made without
// -l (node lines only, so no properties). Reads raw bytes: a value that isn't
// valid UTF-8 or can't be read is left out, never its node. Several top-level
// entries are gathered under one unnamed root. No node line, or more than
// maximumSavedRegistryBytes, gives nullptr. Linear in the size of the text;
// never throws.
//
// The tree keeps the bytes and reads each value from them only when asked
// (NodeProperties): a whole-machine dump costs little more than its own size.
std::unique_ptr<NativeUSBNode> parseIORegText(std::string bytes);

// True when the bytes hold at least one ioreg node line ("+-o " after the
// indent cells at the start of a line).
bool looksLikeIORegText(std::string_view bytes);

} // namespace korvane
