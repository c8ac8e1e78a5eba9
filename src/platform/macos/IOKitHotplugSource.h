#pragma once

#include "collector/HotplugSource.h"
#include "collector/Scheduler.h"

#include <IOKit/IOKitLib.h>
#include <functional>
#include <memory>
#include <vector>

namespace korvane {

// USB devices matched and terminated, heard through IOKit notifications on
// the main run loop (IOUSBHostDevice and, for older systems, IOUSBDevice).
// Each notification drains its iterator, which re-arms it and passes over
// the devices present at start, and posts one `onChange` to the main thread.
class IOKitHotplugSource final : public HotplugSource {
  public:
    explicit IOKitHotplugSource(Scheduler& scheduler) : scheduler_(scheduler) {}
    ~IOKitHotplugSource() override;

    IOKitHotplugSource(const IOKitHotplugSource&) = delete;
    IOKitHotplugSource& operator=(const IOKitHotplugSource&) = delete;

    void start(std::function<void()> onChange) override;

  private:
    static void deviceNotification(void* context, io_iterator_t iterator);
    void registerFor(const char* serviceClass, const char* notification);

    Scheduler& scheduler_;
    std::shared_ptr<std::function<void()>> onChange_;
    IONotificationPortRef notificationPort_ = nullptr;
    std::vector<io_iterator_t> iterators_;
    bool started_ = false;
};

} // namespace korvane
