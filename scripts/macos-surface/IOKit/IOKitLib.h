// The IOKit user-space calls the macOS sources use, declared from Apple's
// IOKit reference (IOKitLib: registry entries, iterators, matching,
// notifications). Only names and signatures.
#pragma once

#include <Availability.h>
#include <CoreFoundation/CoreFoundation.h>
#include <mach/mach.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef mach_port_t io_object_t;
typedef io_object_t io_iterator_t;
typedef io_object_t io_registry_entry_t;
typedef io_object_t io_service_t;
typedef UInt32 IOOptionBits;
typedef char io_name_t[128];
typedef struct IONotificationPort* IONotificationPortRef;
typedef void (*IOServiceMatchingCallback)(void* refcon, io_iterator_t iterator);

#define IO_OBJECT_NULL ((io_object_t)0)

// The default main port; before macOS 12 the same value went by another
// name, and MACH_PORT_NULL works on every release.
extern const mach_port_t kIOMainPortDefault KORVANE_SURFACE_MACOS(12.0);

#define kIOServicePlane "IOService"
#define kIOFirstMatchNotification "IOServiceFirstMatch"
#define kIOMatchedNotification "IOServiceMatched"
#define kIOTerminatedNotification "IOServiceTerminate"

kern_return_t IOObjectRelease(io_object_t object);
kern_return_t IOObjectRetain(io_object_t object);
CFStringRef IOObjectCopyClass(io_object_t object);
io_object_t IOIteratorNext(io_iterator_t iterator);

io_registry_entry_t IORegistryGetRootEntry(mach_port_t mainPort);
kern_return_t IORegistryEntryCreateCFProperties(io_registry_entry_t entry, CFMutableDictionaryRef* properties,
                                                CFAllocatorRef allocator, IOOptionBits options);
kern_return_t IORegistryEntryGetChildIterator(io_registry_entry_t entry, const char* plane,
                                              io_iterator_t* iterator);
kern_return_t IORegistryEntryGetParentEntry(io_registry_entry_t entry, const char* plane,
                                            io_registry_entry_t* parent);
kern_return_t IORegistryEntryGetRegistryEntryID(io_registry_entry_t entry, uint64_t* entryID);

CFMutableDictionaryRef IOServiceMatching(const char* name);
kern_return_t IOServiceGetMatchingServices(mach_port_t mainPort, CFDictionaryRef matching,
                                           io_iterator_t* existing);

IONotificationPortRef IONotificationPortCreate(mach_port_t mainPort);
void IONotificationPortDestroy(IONotificationPortRef notify);
CFRunLoopSourceRef IONotificationPortGetRunLoopSource(IONotificationPortRef notify);
kern_return_t IOServiceAddMatchingNotification(IONotificationPortRef notifyPort, const char* notificationType,
                                               CFDictionaryRef matching, IOServiceMatchingCallback callback,
                                               void* refCon, io_iterator_t* notification);

#ifdef __cplusplus
}
#endif
