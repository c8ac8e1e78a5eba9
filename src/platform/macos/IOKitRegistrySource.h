#pragma once

#include "scanner/RegistrySource.h"

namespace korvane {

// The live IOKit registry: the whole service plane copied into a tree, every
// entry with all its properties, through the six registry calls the scanner
// is built on (root entry, properties, class, child iterator, next, release).
class IOKitRegistrySource final : public RegistrySource {
  public:
    std::unique_ptr<NativeUSBNode> copyRoot() const override;
};

} // namespace korvane
