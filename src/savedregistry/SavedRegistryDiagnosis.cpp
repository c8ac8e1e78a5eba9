#include "savedregistry/SavedRegistryDiagnosis.h"

#include "savedregistry/GuardedPropertyList.h"
#include "savedregistry/SavedRegistryLimits.h"
#include "scanner/ControllerDiscovery.h"
#include "scanner/PropertyReaders.h"

namespace korvane {

namespace {

bool trimmedIsEmpty(std::string_view bytes) {
    return bytes.find_first_not_of(" \t\r\n") == std::string_view::npos;
}

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

constexpr std::string_view howToSave =
    "On the Mac, save the registry with ioreg -l -w0 > IOReg.txt (or korvane "
    "snapshot -o FILE) and open that file.";

// IORegistryExplorer saves its window as an NSKeyedArchiver archive whose
// root object is a RexDataStore (the iMac14,2 file of DarwinDumped is one):
// each entry's properties sit in it as an XML blob, not as ioreg -a entries.
std::optional<std::string> whyKeyedArchive(plist_t root, std::string_view bytes) {
    if (plist_get_node_type(root) != PLIST_DICT) {
        return std::nullopt;
    }
    const auto archiver = plistText(plist_dict_get_item(root, "$archiver"));
    if (!archiver || *archiver != "NSKeyedArchiver") {
        return std::nullopt;
    }
    if (bytes.find("RexDataStore") != std::string_view::npos) {
        return "an IORegistryExplorer archive (.ioreg), which only IORegistryExplorer itself can read. " +
               std::string(howToSave);
    }
    return "a keyed archive (NSKeyedArchiver) of some program, not a registry saved by ioreg. " +
           std::string(howToSave);
}

} // namespace

std::optional<std::string> whyNoRegistryIn(std::string_view bytes) {
    if (parseSavedRegistry(std::string(bytes))) {
        return std::nullopt;
    }
    if (trimmedIsEmpty(bytes)) {
        return "an empty file. " + std::string(howToSave);
    }
    switch (savedRegistryFormat(bytes)) {
    case SavedRegistryFormat::Snapshot: {
        const PlistPtr root = parseGuardedPropertyList(bytes, maximumSavedValueDepth);
        if (!root) {
            return std::string("a property list that is damaged (cut short?): it breaks off or goes wrong "
                               "before its end. Save it again, whole.");
        }
        if (auto archive = whyKeyedArchive(root.get(), bytes)) {
            return archive;
        }
        return "a property list that is not a registry saved by ioreg -a (it has no IOObjectClass "
               "entries). " +
               std::string(howToSave);
    }
    case SavedRegistryFormat::IORegText:
        return "ioreg text without a single readable entry. " + std::string(howToSave);
    case SavedRegistryFormat::Unknown:
        break;
    }
    return "neither ioreg text nor a property list. " + std::string(howToSave);
}

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
