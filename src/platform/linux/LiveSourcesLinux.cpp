#include "platform/LiveSources.h"

namespace korvane {

// The sysfs registry and the udev hotplug source come with the Linux layer;
// until then a live scan finds no controller and nothing is heard.
std::unique_ptr<RegistrySource> makeLiveRegistrySource() {
    return std::make_unique<EmptyRegistrySource>();
}

std::unique_ptr<HotplugSource> makeHotplugSource(Scheduler&) {
    return nullptr;
}

} // namespace korvane
