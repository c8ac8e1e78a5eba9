#include "scanner/NativeUSBTreeScanner.h"

#include "scanner/ControllerDiscovery.h"
#include "scanner/PortDiscovery.h"
#include "scanner/PropertyReaders.h"

#include <algorithm>
#include <cstdio>
#include <unordered_set>

namespace korvane {

namespace {

std::string hex4(std::int64_t value) {
    char text[12];
    std::snprintf(text, sizeof text, "%04x", static_cast<unsigned>(static_cast<std::uint32_t>(value)));
    return text;
}

std::string vendorDevicePair(const PCIIdentity& identity) {
    return hex4(identity.vendorID) + ':' + hex4(identity.deviceID);
}

std::string lowerCasedASCII(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](char c) { return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c; });
    return text;
}

std::string controllerDeviceName(const PCIIdentity& identity, IDsNameResolver& names) {
    std::string name = names.pciName(identity.vendorID, identity.deviceID);
    if (name.empty()) {
        name = names.usbName(identity.vendorID, identity.deviceID);
    }
    return name;
}

} // namespace

USBScanResult NativeUSBTreeScanner::scan() const {
    const std::unique_ptr<NativeUSBNode> root = source_.copyRoot();
    if (!root) {
        return {};
    }
    return scanTree(*root);
}

USBScanResult NativeUSBTreeScanner::scanTree(const NativeUSBNode& root) const {
    const std::vector<const NativeUSBNode*> nodes = flatten(root);

    std::vector<std::pair<const NativeUSBNode*, const NativeUSBNode*>> services; // service, its PCI device
    std::vector<const NativeUSBNode*> pciDevices;
    for (const NativeUSBNode* node : nodes) {
        if (isAppleXHCIService(*node)) {
            if (const NativeUSBNode* pci = nearestUSBControllerPCIDevice(*node)) {
                services.emplace_back(node, pci);
            }
        }
        if (isUSBControllerPCIDevice(*node)) {
            pciDevices.push_back(node);
        }
    }

    std::vector<USBControllerMap> controllers;
    // Keyed with the location, so two like controllers in one machine stay two,
    // while several services stacked under one PCI device give one.
    std::unordered_set<std::string> controllerKeys;
    for (const auto& [service, pci] : services) {
        const auto identity = pciIdentity(*pci);
        if (!identity) {
            continue;
        }
        std::string location = pci->location.empty() ? service->location : pci->location;
        if (!controllerKeys.insert(vendorDevicePair(*identity) + ':' + lowerCasedASCII(location)).second) {
            continue;
        }
        USBControllerMap controller;
        controller.ports = scanPorts(*service, names_);
        controller.name = baseName(service->name);
        controller.location = std::move(location);
        controller.vendorID = identity->vendorID;
        controller.deviceID = identity->deviceID;
        controller.ioNameMatch = "pci" + hex4(identity->vendorID) + ',' + hex4(identity->deviceID);
        controller.providerClass = service->className;
        controller.usbDeviceName = controllerDeviceName(*identity, names_);
        controllers.push_back(std::move(controller));
    }

    // PCI devices without a service still get a support personality, but only
    // one per vendor and device: which of several like ones is unknowable here.
    std::unordered_set<std::string> pairs;
    for (const auto& controller : controllers) {
        pairs.insert(vendorDevicePair({controller.vendorID, controller.deviceID}));
    }
    for (const NativeUSBNode* pci : pciDevices) {
        const auto identity = pciIdentity(*pci);
        if (!identity || !pairs.insert(vendorDevicePair(*identity)).second) {
            continue;
        }
        USBControllerMap controller;
        controller.name = baseName(pci->name);
        controller.location = pci->location;
        controller.vendorID = identity->vendorID;
        controller.deviceID = identity->deviceID;
        controller.ioNameMatch = "pci" + hex4(identity->vendorID) + ',' + hex4(identity->deviceID);
        controller.usbDeviceName = controllerDeviceName(*identity, names_);
        controllers.push_back(std::move(controller));
    }

    std::stable_sort(controllers.begin(), controllers.end(),
                     [](const USBControllerMap& a, const USBControllerMap& b) {
                         if (a.vendorID != b.vendorID) {
                             return a.vendorID < b.vendorID;
                         }
                         if (a.deviceID != b.deviceID) {
                             return a.deviceID < b.deviceID;
                         }
                         return localizedStandardLess(a.location, b.location);
                     });
    return {std::move(controllers)};
}

} // namespace korvane
