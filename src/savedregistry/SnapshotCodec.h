#pragma once

#include "scanner/NativeUSBNode.h"

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>

namespace korvane {

// Snapshot files: a registry tree as a property list shaped the way `ioreg -a`
// writes it. Each entry is a dictionary: IOObjectClass is its class,
// IORegistryEntryChildren its children, IORegistryEntryName and
// IORegistryEntryLocation its registry name and location; the other bookkeeping
// keys ioreg adds are dropped and every remaining key is a property.

// The tree of an XML or binary snapshot. nullptr when the bytes are no
// property list, or one not in that shape (an IORegistryExplorer archive, for
// one). A value of a kind the registry doesn't have (real, date) is left out.
// Never throws; nesting and expanded size are bounded.
std::unique_ptr<NativeUSBNode> parseSnapshot(std::string_view bytes);

// True for bytes that start as a property list does: "bplist00", or an XML
// declaration, doctype or <plist> after white space.
bool looksLikePropertyList(std::string_view bytes);

// The tree as an XML snapshot. Reading it back gives the same tree: names,
// locations, classes, properties and child order (a dictionary whose keys
// aren't text comes back with text keys). The node properties a snapshot
// doesn't keep (isKeptBySnapshot()) are left out, and parseSnapshot() drops
// them from files that hold them.
std::string snapshotPropertyList(const NativeUSBNode& root);

// Writes snapshotPropertyList(root) to `path` atomically. Throws
// std::system_error with the platform's wording.
void writeSnapshot(const NativeUSBNode& root, const std::filesystem::path& path);

} // namespace korvane
