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

    // Only the first call has an effect, so a window that appears again
    // registers nothing twice; a source that failed is not tried again.
    void start() {
        if (started_) {
            return;
        }
        started_ = true;
        if (source_) {
            source_->start([this] {
                if (onChange) {
                    onChange();
                }
            });
        }
    }

    bool isStarted() const { return started_; }

    std::function<void()> onChange;

  private:
    std::unique_ptr<HotplugSource> source_;
    bool started_ = false;
};

} // namespace korvane
