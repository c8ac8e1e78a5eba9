#pragma once

#include "scanner/NativeUSBNode.h"

#include <memory>

namespace korvane {

// Where a scan gets its registry tree from: the live registry of this machine
// (IOKit on macOS, sysfs on Linux) or a saved one (a snapshot file or an
// ioreg text dump).
//
// Contract: copyRoot() builds a whole new tree each call and hands it over;
// the scan owns it for its length and nothing else holds a part of it. It is
// called on a scan's background thread, never on the main thread. It never
// throws: no root, an unreadable source or a missing file give nullptr, and
// an entry that can't be read fully gives an emptier node, not a missing one.
// The node's name and location are already set as registryName() and
// registryLocation() give them for its properties.
class RegistrySource {
  public:
    virtual ~RegistrySource() = default;
    virtual std::unique_ptr<NativeUSBNode> copyRoot() const = 0;
};

// A registry with nothing in it.
class EmptyRegistrySource final : public RegistrySource {
  public:
    std::unique_ptr<NativeUSBNode> copyRoot() const override { return nullptr; }
};

} // namespace korvane
