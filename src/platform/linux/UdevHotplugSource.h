#pragma once

#include "collector/HotplugSource.h"
#include "collector/Scheduler.h"

#include <atomic>
#include <memory>
#include <string>
#include <thread>

namespace korvane {

// USB devices coming and going, heard on a libudev monitor (subsystem "usb",
// device type "usb_device", actions add and remove). A thread of its own
// waits on the monitor and posts one `onChange` per event to the main thread
// through the scheduler; the devices already present are never announced,
// for a netlink monitor hears only what happens after it binds.
//
// `netlinkSource` is "udev" (events after udevd has processed them, the usual
// choice on a desktop) or "kernel" (raw kernel events, for a system without
// udevd such as an initramfs). A source that can't be opened leaves the
// monitor silent.
class UdevHotplugSource final : public HotplugSource {
  public:
    explicit UdevHotplugSource(Scheduler& scheduler, std::string netlinkSource = "udev");
    ~UdevHotplugSource() override;

    UdevHotplugSource(const UdevHotplugSource&) = delete;
    UdevHotplugSource& operator=(const UdevHotplugSource&) = delete;

    void start(std::function<void()> onChange) override;

    // True when start() got a monitor going; for tests and diagnostics.
    bool isListening() const { return listener_.joinable(); }

    // "udev" when udevd runs on this machine, else "kernel".
    static std::string preferredNetlinkSource();

  private:
    struct Monitor;

    Scheduler& scheduler_;
    std::string netlinkSource_;
    bool started_ = false;
    std::unique_ptr<Monitor> monitor_;
    int stopEvent_ = -1;
    std::thread listener_;
};

} // namespace korvane
