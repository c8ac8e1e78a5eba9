#pragma once

#include "scanner/NativeUSBNode.h"

namespace korvane {

// Masks a registry tree before it is saved for others to read, as the
// package masks its files: every text value through redactSensitiveText, and
// whole values, text or data, under the keys that name a unit or a person
// (serial numbers, UUIDs, MAC addresses, ROM and logic-board values, the
// console user, the computer's names). Numbers, node names and the tree's
// shape stay, so the tree scans as before. Never fails; any depth.
void redactSensitiveProperties(NativeUSBNode& root);

} // namespace korvane
