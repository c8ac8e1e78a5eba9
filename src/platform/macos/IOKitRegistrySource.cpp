#include "platform/macos/IOKitRegistrySource.h"

#include "platform/macos/IOKitHandles.h"
#include "platform/macos/IOKitPropertyConversion.h"
#include "scanner/PropertyReaders.h"

#include <cstdint>
#include <map>
#include <vector>

namespace korvane {

namespace {

// The default main port on every release; kIOMainPortDefault names it only
// from macOS 12 on.
constexpr mach_port_t defaultMainPort = MACH_PORT_NULL;

// A PCI device's class code is base class, subclass and programming interface
// over a revision byte: serial bus (0C), USB (03), xHCI (30).
constexpr const char* xhciClassMatch = "0x0c033000&0xffffff00";

// Ancestors of a deep device are few; a registry loop is not followed forever.
constexpr int maximumAncestors = 64;

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

NativeUSBNode& addEntry(NativeUSBNode& parent, io_registry_entry_t entry) {
    PropertyDictionary properties = entryProperties(entry);
    std::string className = entryClassName(entry);
    std::string name = registryName(properties, className);
    std::string location = registryLocation(properties);
    return parent.addChild(std::move(name), std::move(location), std::move(className), std::move(properties));
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
        fillChildren(addEntry(node, child.get()), child.get());
    }
}

std::uint64_t entryID(io_registry_entry_t entry) {
    std::uint64_t id = 0;
    return IORegistryEntryGetRegistryEntryID(entry, &id) == KERN_SUCCESS ? id : 0;
}

// The entries from just below the root down to `device`, top first.
std::vector<IOObject> pathBelowRoot(io_registry_entry_t device, std::uint64_t rootID) {
    std::vector<IOObject> path;
    IOObjectRetain(device);
    path.emplace_back(device);
    for (int step = 0; step < maximumAncestors; ++step) {
        IOObject parent;
        if (IORegistryEntryGetParentEntry(path.back().get(), kIOServicePlane, parent.receive()) !=
                KERN_SUCCESS ||
            entryID(parent.get()) == rootID) {
            break;
        }
        path.push_back(std::move(parent));
    }
    return {std::make_move_iterator(path.rbegin()), std::make_move_iterator(path.rend())};
}

} // namespace

std::unique_ptr<NativeUSBNode> IOKitRegistrySource::copyRoot() const {
    IOObject rootEntry(IORegistryGetRootEntry(defaultMainPort));
    if (!rootEntry) {
        return nullptr;
    }
    PropertyDictionary properties = entryProperties(rootEntry.get());
    std::string className = entryClassName(rootEntry.get());
    std::string name = registryName(properties, className);
    std::string location = registryLocation(properties);
    auto root = std::make_unique<NativeUSBNode>(std::move(name), std::move(location), std::move(className),
                                                std::move(properties), nullptr);

    // IOServiceGetMatchingServices consumes the matching dictionary.
    CFMutableDictionaryRef matching = IOServiceMatching("IOPCIDevice");
    if (!matching) {
        return root;
    }
    {
        CFOwned<CFStringRef> key(
            CFStringCreateWithCString(kCFAllocatorDefault, "IOPCIClassMatch", kCFStringEncodingUTF8));
        CFOwned<CFStringRef> value(
            CFStringCreateWithCString(kCFAllocatorDefault, xhciClassMatch, kCFStringEncodingUTF8));
        if (key && value) {
            CFDictionarySetValue(matching, key.get(), value.get());
        }
    }
    IOObject devices;
    if (IOServiceGetMatchingServices(defaultMainPort, matching, devices.receive()) != KERN_SUCCESS) {
        return root;
    }

    // Two controllers behind one bridge share the bridge's node.
    const std::uint64_t rootID = entryID(rootEntry.get());
    std::map<std::uint64_t, NativeUSBNode*> copied;
    while (true) {
        IOObject device(IOIteratorNext(devices.get()));
        if (!device) {
            break;
        }
        NativeUSBNode* parent = root.get();
        bool isCopied = false;
        for (const IOObject& entry : pathBelowRoot(device.get(), rootID)) {
            const std::uint64_t id = entryID(entry.get());
            if (auto found = copied.find(id); id != 0 && found != copied.end()) {
                parent = found->second;
                isCopied = true;
                continue;
            }
            parent = &addEntry(*parent, entry.get());
            isCopied = false;
            copied.emplace(id, parent);
        }
        // A device already copied came with everything below it.
        if (!isCopied) {
            fillChildren(*parent, device.get());
        }
    }
    return root;
}

} // namespace korvane
