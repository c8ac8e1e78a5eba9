#include "platform/macos/IOKitHotplugSource.h"

#include "platform/macos/IOKitHandles.h"

#include <CoreFoundation/CoreFoundation.h>

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

} // namespace

IOKitHotplugSource::~IOKitHotplugSource() {
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
    onChange_ = std::make_shared<std::function<void()>>(std::move(onChange));
    notificationPort_ = IONotificationPortCreate(kIOMainPortDefault);
    if (!notificationPort_) {
        return;
    }
    if (CFRunLoopSourceRef source = IONotificationPortGetRunLoopSource(notificationPort_)) {
        CFRunLoopAddSource(CFRunLoopGetMain(), source, kCFRunLoopCommonModes);
    }
    registerFor("IOUSBHostDevice", kIOFirstMatchNotification);
    registerFor("IOUSBHostDevice", kIOTerminatedNotification);
    registerFor("IOUSBDevice", kIOFirstMatchNotification);
    registerFor("IOUSBDevice", kIOTerminatedNotification);
}

void IOKitHotplugSource::registerFor(const char* serviceClass, const char* notification) {
    if (!notificationPort_) {
        return;
    }
    // IOServiceAddMatchingNotification consumes the matching dictionary.
    CFMutableDictionaryRef matching = IOServiceMatching(serviceClass);
    if (!matching) {
        return;
    }
    io_iterator_t iterator = IO_OBJECT_NULL;
    if (IOServiceAddMatchingNotification(notificationPort_, notification, matching, deviceNotification, this,
                                         &iterator) != KERN_SUCCESS) {
        return;
    }
    iterators_.push_back(iterator);
    drain(iterator);
}

void IOKitHotplugSource::deviceNotification(void* context, io_iterator_t iterator) {
    if (!context) {
        return;
    }
    auto* self = static_cast<IOKitHotplugSource*>(context);
    drain(iterator);
    // Posted rather than called: the model's work belongs on the main queue,
    // and the shared callback outlives this source if a task is still queued.
    self->scheduler_.postToMain([callback = self->onChange_] {
        if (callback && *callback) {
            (*callback)();
        }
    });
}

} // namespace korvane
