#pragma once

#include <libudev.h>
#include <memory>

namespace korvane {

struct UdevDeleter {
    void operator()(udev* handle) const { udev_unref(handle); }
    void operator()(udev_monitor* handle) const { udev_monitor_unref(handle); }
    void operator()(udev_device* handle) const { udev_device_unref(handle); }
};

using UdevPointer = std::unique_ptr<udev, UdevDeleter>;
using UdevMonitorPointer = std::unique_ptr<udev_monitor, UdevDeleter>;
using UdevDevicePointer = std::unique_ptr<udev_device, UdevDeleter>;

} // namespace korvane
