#include "savedregistry/SavedRegistryDiagnosis.h"

#include "scanner/ControllerDiscovery.h"
#include "scanner/PropertyReaders.h"

namespace korvane {

namespace {

struct TreeCensus {
    std::size_t entries = 0;
    std::size_t entriesWithProperties = 0;
    std::size_t pciDevices = 0;
    std::size_t xhciPCIDevices = 0;
    std::size_t hostServices = 0;
    std::size_t usbDevices = 0;
};

TreeCensus census(const NativeUSBNode& root) {
    TreeCensus counts;
    for (const NativeUSBNode* node : flatten(root)) {
        ++counts.entries;
        counts.entriesWithProperties += node->properties.empty() ? 0 : 1;
        counts.pciDevices += node->className == "IOPCIDevice" ? 1 : 0;
        counts.xhciPCIDevices += isUSBControllerPCIDevice(*node) ? 1 : 0;
        counts.hostServices += isAppleXHCIService(*node) ? 1 : 0;
        const bool isUSBDevice =
            node->className.find("USB") != std::string::npos && node->className.ends_with("Device");
        counts.usbDevices += isUSBDevice ? 1 : 0;
    }
    return counts;
}

} // namespace

std::string whyNoControllerIn(const NativeUSBNode& root, SavedRegistryFormat format) {
    const std::string kind =
        format == SavedRegistryFormat::Snapshot ? "an ioreg -a snapshot" : "an ioreg text dump";
    const TreeCensus counts = census(root);
    const std::string entries = std::to_string(counts.entries) + " entries";
    if (counts.entriesWithProperties <= 1 && counts.entries > 1) {
        return kind + " without properties (ioreg without -l): nothing in its " + entries +
               " says which PCI device is an xHCI controller. Save the registry with ioreg -l -w0.";
    }
    if (counts.pciDevices == 0 && counts.usbDevices > 0) {
        return kind + " of the IOUSB plane (ioreg -p IOUSB): its " + entries +
               " are USB devices, and the controllers stand in the IOService plane. Save the registry with "
               "ioreg -l -w0, without -p.";
    }
    if (counts.xhciPCIDevices == 0 && counts.hostServices > 0) {
        return kind + " with " + std::to_string(counts.hostServices) +
               " USB host service(s) but no PCI device of the xHCI class (0C0330) above them, in its " +
               entries + ".";
    }
    if (counts.xhciPCIDevices == 0) {
        return kind + " of " + entries + " (" + std::to_string(counts.pciDevices) +
               " PCI devices) without a PCI device of the xHCI class (0C0330): the machine shows no xHCI "
               "controller.";
    }
    return kind + " with " + std::to_string(counts.xhciPCIDevices) +
           " PCI device(s) of the xHCI class, but no vendor and device IDs to name them by.";
}

} // namespace korvane
