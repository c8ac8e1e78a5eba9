#pragma once

#include "scanner/RegistrySource.h"

namespace korvane {

// The live IOKit registry, as much of the service plane as a scan reads: the
// USB (xHCI-class) PCI devices with everything below them and the entries
// above them up to the root, each with all its properties. The rest of the
// plane (thousands of entries on a Mac Pro) is never copied, so a scan or a
// hotplug refresh costs what the USB part of the machine does.
class IOKitRegistrySource final : public RegistrySource {
  public:
    std::unique_ptr<NativeUSBNode> copyRoot() const override;
};

} // namespace korvane
