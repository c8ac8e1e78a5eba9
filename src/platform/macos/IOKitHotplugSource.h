#pragma once

#include "collector/HotplugSource.h"
#include "collector/Scheduler.h"
#include "platform/NotificationThread.h"

#include <CoreFoundation/CoreFoundation.h>
#include <IOKit/IOKitLib.h>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

namespace korvane {

// USB devices matched and terminated, heard through IOKit notifications
// (IOUSBHostDevice and, for older systems, IOUSBDevice) on a thread of its
// own that runs its own run loop: the command line never runs the main one.
// Each notification drains its iterator, which re-arms it; the devices present
// at start are passed over. Every notification posts one `onChange` to the
// main thread through the scheduler.
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
    void listen(NotificationThread& thread);
    void stopListening();

    Scheduler& scheduler_;
    IONotificationPortRef notificationPort_ = nullptr;
    std::vector<io_iterator_t> iterators_;
    std::mutex runLoopMutex_;
    CFRunLoopRef runLoop_ = nullptr; // the thread's, while it runs
    std::unique_ptr<NotificationThread> thread_;
    bool started_ = false;
};

} // namespace korvane
