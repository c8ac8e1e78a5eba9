#include "platform/macos/IOKitRegistrySource.h"

#include "platform/macos/IOKitHandles.h"
#include "platform/macos/IOKitPropertyConversion.h"
#include "scanner/PropertyReaders.h"

namespace korvane {

namespace {

PropertyDictionary entryProperties(io_registry_entry_t entry) {
    CFMutableDictionaryRef raw = nullptr;
    if (IORegistryEntryCreateCFProperties(entry, &raw, kCFAllocatorDefault, 0) != KERN_SUCCESS) {
        return {};
    }
    CFOwned<CFMutableDictionaryRef> properties(raw);
    if (!properties || CFGetTypeID(properties.get()) != CFDictionaryGetTypeID()) {
        return {};
    }
    return propertyDictionaryFromCF(properties.get());
}

std::string entryClassName(io_object_t entry) {
    CFOwned<CFStringRef> className(IOObjectCopyClass(entry));
    return textFromCF(className.get()).value_or("");
}

void fillChildren(NativeUSBNode& node, io_registry_entry_t entry) {
    IOObject iterator;
    if (IORegistryEntryGetChildIterator(entry, kIOServicePlane, iterator.receive()) != KERN_SUCCESS) {
        return;
    }
    while (true) {
        IOObject child(IOIteratorNext(iterator.get()));
        if (!child) {
            break;
        }
        PropertyDictionary properties = entryProperties(child.get());
        std::string className = entryClassName(child.get());
        std::string name = registryName(properties, className);
        std::string location = registryLocation(properties);
        NativeUSBNode& childNode =
            node.addChild(std::move(name), std::move(location), std::move(className), std::move(properties));
        fillChildren(childNode, child.get());
    }
}

} // namespace

std::unique_ptr<NativeUSBNode> IOKitRegistrySource::copyRoot() const {
    IOObject rootEntry(IORegistryGetRootEntry(kIOMainPortDefault));
    if (!rootEntry) {
        return nullptr;
    }
    PropertyDictionary properties = entryProperties(rootEntry.get());
    std::string className = entryClassName(rootEntry.get());
    std::string name = registryName(properties, className);
    std::string location = registryLocation(properties);
    auto root = std::make_unique<NativeUSBNode>(std::move(name), std::move(location), std::move(className),
                                                std::move(properties), nullptr);
    fillChildren(*root, rootEntry.get());
    return root;
}

} // namespace korvane
