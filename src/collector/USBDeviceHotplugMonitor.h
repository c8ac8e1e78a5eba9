#pragma once

#include "collector/HotplugSource.h"

#include <functional>
#include <memory>

namespace korvane {

// The model's end of hotplug tracking: owns the platform's source and turns
// its events into calls of onChange, read at the moment of each event.
class USBDeviceHotplugMonitor {
  public:
    explicit USBDeviceHotplugMonitor(std::unique_ptr<HotplugSource> source) : source_(std::move(source)) {}

    // The sources' posted events point back here; a copy would leave them
    // pointing at the original.
    USBDeviceHotplugMonitor(const USBDeviceHotplugMonitor&) = delete;
    USBDeviceHotplugMonitor& operator=(const USBDeviceHotplugMonitor&) = delete;

    // Only the first call has an effect, so a window that appears again
    // registers nothing twice; a source that failed is not tried again.
    void start() {
        if (started_) {
            return;
        }
        started_ = true;
        if (source_) {
            // The sources post each event to the main queue, where it can wait
            // past the monitor's end: a device plugged just before quit is run
            // by the scheduler after the window and its model are gone. The
            // event holds the monitor weakly, so a late one does nothing.
            source_->start([monitor = std::weak_ptr<USBDeviceHotplugMonitor>(self_)] {
                if (auto self = monitor.lock(); self && self->onChange) {
                    self->onChange();
                }
            });
        }
    }

    std::function<void()> onChange;

  private:
    // Owns nothing: it only tells the posted events whether the monitor is
    // still there. Events run on the main thread, where the monitor ends too.
    std::shared_ptr<USBDeviceHotplugMonitor> self_{this, [](USBDeviceHotplugMonitor*) {}};
    std::unique_ptr<HotplugSource> source_;
    bool started_ = false;
};

} // namespace korvane
