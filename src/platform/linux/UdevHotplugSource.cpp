#include "platform/linux/UdevHotplugSource.h"

#include "platform/linux/UdevHandles.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

namespace korvane {

struct UdevHotplugSource::Monitor {
    UdevPointer context;
    UdevMonitorPointer monitor;
};

UdevHotplugSource::UdevHotplugSource(Scheduler& scheduler, std::string netlinkSource)
    : scheduler_(scheduler), netlinkSource_(std::move(netlinkSource)) {}

UdevHotplugSource::~UdevHotplugSource() {
    if (listener_.joinable()) {
        const std::uint64_t one = 1;
        // The listener wakes on this and ends; a failed write would leave it
        // blocked, so retry on interruption.
        while (::write(stopEvent_, &one, sizeof one) < 0 && errno == EINTR) {
        }
        listener_.join();
    }
    if (stopEvent_ >= 0) {
        ::close(stopEvent_);
    }
}

std::string UdevHotplugSource::preferredNetlinkSource() {
    // libudev refuses "udev" monitors when udevd isn't running and then hears
    // nothing at all; the kernel's own events are the next best.
    std::error_code error;
    return std::filesystem::exists("/run/udev/control", error) ? "udev" : "kernel";
}

void UdevHotplugSource::start(std::function<void()> onChange) {
    if (started_) {
        return;
    }
    started_ = true;

    auto monitor = std::make_unique<Monitor>();
    monitor->context.reset(udev_new());
    if (!monitor->context) {
        return;
    }
    monitor->monitor.reset(udev_monitor_new_from_netlink(monitor->context.get(), netlinkSource_.c_str()));
    if (!monitor->monitor ||
        udev_monitor_filter_add_match_subsystem_devtype(monitor->monitor.get(), "usb", "usb_device") < 0 ||
        udev_monitor_enable_receiving(monitor->monitor.get()) < 0) {
        return;
    }
    const int monitorDescriptor = udev_monitor_get_fd(monitor->monitor.get());
    stopEvent_ = ::eventfd(0, EFD_CLOEXEC);
    if (monitorDescriptor < 0 || stopEvent_ < 0) {
        return;
    }
    // libudev reads until the socket is empty; a blocking socket would then
    // hold the listener where the stop signal can't reach it.
    const int flags = ::fcntl(monitorDescriptor, F_GETFL);
    if (flags < 0 || ::fcntl(monitorDescriptor, F_SETFL, flags | O_NONBLOCK) < 0) {
        return;
    }
    monitor_ = std::move(monitor);

    // The callback is shared with the posted tasks, so a task still queued
    // when this source is gone calls a live function, never into `this`.
    auto callback = std::make_shared<std::function<void()>>(std::move(onChange));
    udev_monitor* handle = monitor_->monitor.get();
    const int stopDescriptor = stopEvent_;
    Scheduler& scheduler = scheduler_;
    listener_ = std::thread([handle, monitorDescriptor, stopDescriptor, callback, &scheduler] {
        pollfd descriptors[2] = {{monitorDescriptor, POLLIN, 0}, {stopDescriptor, POLLIN, 0}};
        while (true) {
            if (::poll(descriptors, 2, -1) < 0) {
                if (errno == EINTR) {
                    continue;
                }
                return;
            }
            if (descriptors[1].revents != 0) {
                return;
            }
            if ((descriptors[0].revents & (POLLERR | POLLHUP | POLLNVAL)) != 0) {
                return;
            }
            // Drain whatever arrived; each add or remove is one event.
            while (UdevDevicePointer device{udev_monitor_receive_device(handle)}) {
                const char* action = udev_device_get_action(device.get());
                if (action && (std::strcmp(action, "add") == 0 || std::strcmp(action, "remove") == 0)) {
                    scheduler.postToMain([callback] {
                        if (*callback) {
                            (*callback)();
                        }
                    });
                }
            }
        }
    });
}

} // namespace korvane
