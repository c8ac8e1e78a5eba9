#include "scanner/AttachedDeviceNames.h"

#include "base/ASCIIText.h"
#include "base/Text.h"
#include "records/PCIIdentityText.h"
#include "scanner/ControllerDiscovery.h"
#include "scanner/PortDiscovery.h"
#include "scanner/PropertyReaders.h"

#include <vector>

namespace korvane {

namespace {

bool contains(std::string_view text, std::string_view part) {
    return text.find(part) != std::string_view::npos;
}

bool isBluetoothDevice(const NativeUSBNode& node, const std::string& base) {
    std::string text = base + ' ' + node.className;
    for (const char* key : {"USB Product Name", "Product Name", "kUSBProductString", "BluetoothTransport"}) {
        if (const auto value = node.properties.value(key)) {
            if (const auto* valueText = value->text()) {
                text += ' ';
                text += *valueText;
            }
        }
    }
    // ASCII folding is enough here: no non-ASCII letter folds to one of the
    // letters of "bluetooth".
    return containsIgnoringASCIICase(text, "bluetooth");
}

std::optional<std::string> nameFromProperties(const NativeUSBNode& node) {
    static constexpr const char* keys[] = {
        "USB Product Name",  "USB Vendor Name",          "Product Name",      "Product",
        "kUSBProductString", "kUSBVendorString",         "USB Serial Number", "USB Product String",
        "USB Vendor String", "USB Serial Number String", "IOUserClientClass", "IOProviderClass"};
    for (const char* key : keys) {
        const auto value = node.properties.value(key);
        if (!value) {
            continue;
        }
        std::optional<std::string> candidate;
        if (const auto* text = value->text()) {
            candidate = trimmed(*text);
        } else if (const auto* bytes = value->bytes()) {
            if (auto decoded = stringFromNullTerminatedData(*bytes)) {
                candidate = trimmed(*decoded);
            }
        }
        if (candidate && isUsableAttachedDeviceName(*candidate)) {
            return candidate;
        }
    }
    return std::nullopt;
}

bool isDeviceClass(const std::string& className) {
    return contains(className, "IOUSBHostDevice") || contains(className, "USBDevice");
}

std::string numberedDeviceName(std::int64_t vendor, std::int64_t product) {
    return "USB Device " + upperVendorDeviceText(vendor, product);
}

} // namespace

bool isUsableAttachedDeviceName(std::string_view text) {
    const std::string clean = trimmed(text);
    if (clean.empty()) {
        return false;
    }
    const std::string_view view(clean);
    for (std::string_view prefix : {"AppleUSB", "IOUSB", "IOService", "AppleUser", "IOUser", "IOProvider"}) {
        if (view.starts_with(prefix)) {
            return false;
        }
    }
    for (std::string_view placeholder : {"Root Hub Simulation", "USB", "HubDevice", "Device", "Interface"}) {
        if (view == placeholder) {
            return false;
        }
    }
    return true;
}

std::optional<std::string> usbAttachedDeviceDisplayName(const NativeUSBNode& node, IDsNameResolver& names) {
    if (isUSBPortNode(node) || isAppleXHCIService(node) || isUSBControllerPCIDevice(node)) {
        return std::nullopt;
    }
    const std::string base = baseName(node.name);
    const std::string& className = node.className;
    for (std::string_view technical : {"AppleUSBHostPort", "AppleUSB20XHCIPort", "AppleUSB30XHCIPort",
                                       "IOUSBHostInterface", "IOUSBHostHIDDevice"}) {
        if (contains(className, technical)) {
            return std::nullopt;
        }
    }
    // A Bluetooth module reports a different product string with each
    // firmware; the one stable, readable fact is that it is Bluetooth.
    if (isBluetoothDevice(node, base)) {
        return std::string("Bluetooth");
    }
    if (auto name = nameFromProperties(node)) {
        return name;
    }
    const auto vendor = intProperty("idVendor", node.properties);
    const auto product = intProperty("idProduct", node.properties);
    const bool showsDevice = (contains(className, "USB") && !contains(className, "Port")) || vendor ||
                             product || intProperty("USB Address", node.properties) ||
                             intProperty("locationID", node.properties);
    if (!showsDevice) {
        return std::nullopt;
    }
    if (vendor && product) {
        std::string known = names.usbName(*vendor, *product);
        if (isUsableAttachedDeviceName(known)) {
            return known;
        }
        if (isDeviceClass(className)) {
            return base.empty() ? numberedDeviceName(*vendor, *product) : base;
        }
    }
    if (isUsableAttachedDeviceName(base)) {
        return base;
    }
    if (isDeviceClass(className)) {
        return base.empty() ? std::string("USB Device") : base;
    }
    return std::nullopt;
}

std::string firstAttachedDeviceName(const NativeUSBNode& node, IDsNameResolver& names) {
    // Pre-order over the descendants with an explicit stack, so a deep tree
    // from a saved snapshot can't exhaust the call stack.
    std::vector<const NativeUSBNode*> pending;
    for (auto it = node.children.rbegin(); it != node.children.rend(); ++it) {
        pending.push_back(it->get());
    }
    while (!pending.empty()) {
        const NativeUSBNode* current = pending.back();
        pending.pop_back();
        if (auto name = usbAttachedDeviceDisplayName(*current, names); name && !name->empty()) {
            return *name;
        }
        for (auto it = current->children.rbegin(); it != current->children.rend(); ++it) {
            pending.push_back(it->get());
        }
    }
    return {};
}

const std::string& AttachedDeviceNameCache::firstAttachedDeviceName(const NativeUSBNode& node) {
    if (const auto known = firstNames_.find(&node); known != firstNames_.end()) {
        return known->second;
    }
    // The same pre-order walk as the plain function, with an explicit stack of
    // (node, next child) frames. Each frame stands at the child that leads to
    // the frame above it, so a name found anywhere is the answer of every frame
    // on the stack; a frame that runs out of children answers empty.
    struct Frame {
        const NativeUSBNode* node;
        std::size_t nextChild;
    };
    std::vector<Frame> frames{{&node, 0}};
    std::string found;
    while (!frames.empty()) {
        Frame& frame = frames.back();
        if (frame.nextChild == frame.node->children.size()) {
            firstNames_.emplace(frame.node, std::string());
            frames.pop_back();
            if (!frames.empty()) {
                ++frames.back().nextChild;
            }
            continue;
        }
        const NativeUSBNode& child = *frame.node->children[frame.nextChild];
        if (auto name = usbAttachedDeviceDisplayName(child, names_); name && !name->empty()) {
            found = std::move(*name);
            break;
        }
        if (const auto known = firstNames_.find(&child); known != firstNames_.end()) {
            if (!known->second.empty()) {
                found = known->second;
                break;
            }
            ++frame.nextChild;
            continue;
        }
        frames.push_back({&child, 0});
    }
    for (const Frame& frame : frames) {
        firstNames_.insert_or_assign(frame.node, found);
    }
    return firstNames_.at(&node);
}

} // namespace korvane
