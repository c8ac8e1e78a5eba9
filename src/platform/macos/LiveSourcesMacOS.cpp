#include "platform/LiveSources.h"

namespace korvane {

// The IOKit registry and notification sources come with the macOS layer.
std::unique_ptr<RegistrySource> makeLiveRegistrySource() {
    return std::make_unique<EmptyRegistrySource>();
}

std::unique_ptr<HotplugSource> makeHotplugSource(Scheduler&) {
    return nullptr;
}

} // namespace korvane
