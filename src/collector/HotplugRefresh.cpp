#include "collector/CollectorModel.h"

namespace korvane {

// Hotplug: a burst of device events gives one silent refresh, 0.18 seconds
// after the burst's last event.

void CollectorModel::startUSBHotplugMonitoring() {
    std::weak_ptr<CollectorModel> weak = weak_from_this();
    usbMonitor_.onChange = [weak] {
        if (auto model = weak.lock()) {
            model->scheduleUSBHotplugRefresh();
        }
    };
    usbMonitor_.start();
}

void CollectorModel::scheduleUSBHotplugRefresh() {
    if (hotplugRefreshWorkItem_) {
        hotplugRefreshWorkItem_->cancel();
    }
    std::weak_ptr<CollectorModel> weak = weak_from_this();
    hotplugRefreshWorkItem_ = environment_.scheduler.postToMainAfter(hotplugDebounce, [weak] {
        if (auto model = weak.lock()) {
            model->refreshActiveUSBDevices();
        }
    });
}

} // namespace korvane
