#include "scanner/NativeUSBTreeScanner.h"

#include "base/ASCIIText.h"
#include "records/PCIIdentityText.h"
#include "scanner/ControllerDiscovery.h"
#include "scanner/LinuxTreeKeys.h"
#include "scanner/PortCompanions.h"
#include "scanner/PortDiscovery.h"
#include "scanner/PropertyReaders.h"

#include <unordered_set>

namespace korvane {

namespace {

std::string vendorDevicePair(const PCIIdentity& identity) {
    return vendorDeviceText(identity.vendorID, identity.deviceID);
}

// The sentences a source left on the root for the user (a Linux scan without
// firmware connector types says how to get them). A saved tree may hold
// anything there, so only a few short texts pass.
std::vector<std::string> scanNotices(const NativeUSBNode& root) {
    constexpr std::size_t maxNotices = 4;
    constexpr std::size_t maxNoticeBytes = 512;
    std::vector<std::string> notices;
    const auto found = root.properties.value(linuxTreeKey::scanNotices);
    if (!found || !found->array()) {
        return notices;
    }
    for (const auto& value : *found->array()) {
        if (value.text() && !value.text()->empty() && value.text()->size() <= maxNoticeBytes &&
            notices.size() < maxNotices) {
            notices.push_back(*value.text());
        }
    }
    return notices;
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
    std::vector<std::map<std::string, CompanionReference>> companions;
    // Keyed with the location, so two like controllers in one machine stay two,
    // while several services stacked under one PCI device give one.
    std::unordered_set<std::string> controllerKeys;
    for (const auto& [service, pci] : services) {
        const auto identity = pciIdentity(*pci);
        if (!identity) {
            continue;
        }
        std::string location = pci->location.empty() ? service->location : pci->location;
        if (!controllerKeys.insert(vendorDevicePair(*identity) + ':' + asciiLowercased(location)).second) {
            continue;
        }
        USBControllerMap controller;
        controller.ports = scanPorts(*service, names_, &companions.emplace_back());
        controller.name = baseName(service->name);
        controller.location = std::move(location);
        controller.vendorID = identity->vendorID;
        controller.deviceID = identity->deviceID;
        controller.ioNameMatch = pciNameMatch(identity->vendorID, identity->deviceID);
        controller.providerClass = service->className;
        controller.usbDeviceName = names_.pciOrUSBName(identity->vendorID, identity->deviceID);
        controllers.push_back(std::move(controller));
    }

    assignCompanionKeys(controllers, companions);

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
        controller.ioNameMatch = pciNameMatch(identity->vendorID, identity->deviceID);
        controller.usbDeviceName = names_.pciOrUSBName(identity->vendorID, identity->deviceID);
        controllers.push_back(std::move(controller));
    }

    sortControllersByIDsThenLocation(controllers);
    return {std::move(controllers), scanNotices(root)};
}

} // namespace korvane
