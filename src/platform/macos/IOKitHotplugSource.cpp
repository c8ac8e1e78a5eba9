#include "platform/macos/IOKitHotplugSource.h"

#include "platform/macos/IOKitHandles.h"

namespace korvane {

namespace {

// Taking each object is what re-arms the notification; the objects
// themselves are of no interest.
void drain(io_iterator_t iterator) {
    while (true) {
        IOObject object(IOIteratorNext(iterator));
        if (!object) {
            break;
        }
    }
}

// A stop that lands between the loop's look at the flag and its next run is
// picked up within this bound at worst.
constexpr CFTimeInterval longestUnheededStop = 1.0;

} // namespace

IOKitHotplugSource::~IOKitHotplugSource() {
    // The thread goes first: its run loop calls back into this object.
    thread_.reset();
    for (io_iterator_t iterator : iterators_) {
        if (iterator != IO_OBJECT_NULL) {
            IOObjectRelease(iterator);
        }
    }
    if (notificationPort_) {
        IONotificationPortDestroy(notificationPort_);
    }
}

void IOKitHotplugSource::start(std::function<void()> onChange) {
    if (started_) {
        return;
    }
    started_ = true;
    // MACH_PORT_NULL is the default main port on every release;
    // kIOMainPortDefault names it only from macOS 12 on.
    notificationPort_ = IONotificationPortCreate(MACH_PORT_NULL);
    if (!notificationPort_) {
        return;
    }
    thread_ = std::make_unique<NotificationThread>(scheduler_, std::move(onChange));
    registerFor("IOUSBHostDevice", kIOFirstMatchNotification);
    registerFor("IOUSBHostDevice", kIOTerminatedNotification);
    registerFor("IOUSBDevice", kIOFirstMatchNotification);
    registerFor("IOUSBDevice", kIOTerminatedNotification);
    thread_->start([this](NotificationThread& thread) { listen(thread); }, [this] { stopListening(); });
}

void IOKitHotplugSource::registerFor(const char* serviceClass, const char* notification) {
    // IOServiceAddMatchingNotification consumes the matching dictionary.
    CFMutableDictionaryRef matching = IOServiceMatching(serviceClass);
    if (!matching) {
        return;
    }
    io_iterator_t iterator = IO_OBJECT_NULL;
    // The thread, not this source, is the context: it outlives every callback.
    if (IOServiceAddMatchingNotification(notificationPort_, notification, matching, deviceNotification,
                                         thread_.get(), &iterator) != KERN_SUCCESS) {
        return;
    }
    iterators_.push_back(iterator);
    // Not yet on any run loop, so no notification can race this drain.
    drain(iterator);
}

void IOKitHotplugSource::listen(NotificationThread& thread) {
    CFRunLoopRef runLoop = CFRunLoopGetCurrent();
    CFRunLoopSourceRef source = IONotificationPortGetRunLoopSource(notificationPort_);
    if (!source) {
        return;
    }
    CFRunLoopAddSource(runLoop, source, kCFRunLoopDefaultMode);
    {
        std::lock_guard lock(runLoopMutex_);
        runLoop_ = runLoop;
    }
    while (!thread.isStopRequested()) {
        CFRunLoopRunInMode(kCFRunLoopDefaultMode, longestUnheededStop, false);
    }
    {
        std::lock_guard lock(runLoopMutex_);
        runLoop_ = nullptr;
    }
    CFRunLoopRemoveSource(runLoop, source, kCFRunLoopDefaultMode);
}

void IOKitHotplugSource::stopListening() {
    std::lock_guard lock(runLoopMutex_);
    if (runLoop_) {
        CFRunLoopStop(runLoop_);
    }
}

void IOKitHotplugSource::deviceNotification(void* context, io_iterator_t iterator) {
    if (!context) {
        return;
    }
    drain(iterator);
    static_cast<NotificationThread*>(context)->notify();
}

} // namespace korvane
