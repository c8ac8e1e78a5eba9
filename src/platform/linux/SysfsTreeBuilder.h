#pragma once

#include "scanner/NativeUSBNode.h"

#include <cstddef>
#include <string>

namespace korvane {

// Makes the nodes of a sysfs tree and keeps the tree bounded: a fixture or a
// broken kernel could otherwise make a walk build without end.
class SysfsTreeBuilder {
  public:
    // Far above any real machine: a loaded workstation has a few thousand.
    static constexpr std::size_t defaultMaxNodes = 200000;
    // PCI bridges and USB hubs together; USB allows 7 tiers, PCI nesting in
    // Thunderbolt docks reaches about 12.
    static constexpr int maxDepth = 48;

    explicit SysfsTreeBuilder(std::size_t maxNodes = defaultMaxNodes) : remaining_(maxNodes) {}

    // The new child, named and located from its properties as the registry
    // would; null once the budget is spent.
    NativeUSBNode* add(NativeUSBNode& parent, std::string className, PropertyDictionary properties);

  private:
    std::size_t remaining_;
};

} // namespace korvane
