#pragma once

#include "ids/IDsNameResolver.h"
#include "records/USBControllerMap.h"
#include "scanner/NativeUSBNode.h"
#include "scanner/RegistrySource.h"

namespace korvane {

// Finds the xHCI controllers of a registry tree, their ports and the devices
// attached, and returns them in the order every scanner uses
// (sortControllersByIDsThenLocation()). Never throws; what can't be read is
// passed over.
//
// Holds references only: the source and the resolver must outlive it. The
// resolver is the one shared, self-guarding instance, so scans may run on any
// thread.
class NativeUSBTreeScanner {
  public:
    NativeUSBTreeScanner(const RegistrySource& source, IDsNameResolver& names)
        : source_(source), names_(names) {}

    // Takes a fresh tree from the source; no tree gives an empty result.
    USBScanResult scan() const;

    // The same over a tree the caller holds.
    USBScanResult scanTree(const NativeUSBNode& root) const;

  private:
    const RegistrySource& source_;
    IDsNameResolver& names_;
};

} // namespace korvane
