#include "platform/linux/SysfsRegistrySource.h"

#include "platform/linux/SysfsPCIDevice.h"
#include "platform/linux/SysfsReading.h"
#include "platform/linux/SysfsTreeBuilder.h"
#include "platform/linux/SysfsXHCIService.h"
#include "scanner/LinuxTreeKeys.h"

namespace korvane {

struct SysfsRegistrySource::XHCIFunction {
    NativeUSBNode* node;
    SysfsPCIDevice device;
};

SysfsRegistrySource::SysfsRegistrySource(std::filesystem::path sysfsRoot, std::string acpiexec,
                                         double acpiexecTimeout)
    : root_(std::move(sysfsRoot)),
      firmware_(root_ / "firmware" / "acpi" / "tables", std::move(acpiexec), acpiexecTimeout) {}

std::unique_ptr<NativeUSBNode> SysfsRegistrySource::copyRoot() const {
    const auto devices = root_ / "devices";
    std::error_code error;
    if (!std::filesystem::is_directory(devices, error)) {
        return nullptr;
    }
    auto root = std::make_unique<NativeUSBNode>("Root", "", "IORegistryEntry", PropertyDictionary{}, nullptr);
    SysfsTreeBuilder builder;
    FirmwarePortTypes firmwareTypes(firmware_);
    std::vector<XHCIFunction> xhci;
    // pci0000:00, pci0000:40, ...: one per host bridge (PCI segment and root bus).
    for (const auto& name : sysfs::subdirectories(devices)) {
        if (!name.starts_with("pci")) {
            continue;
        }
        PropertyDictionary properties;
        properties["IOName"] = firmwareNodeName(devices / name).value_or(name);
        properties[linuxTreeKey::sysfsName] = name;
        if (NativeUSBNode* host = builder.add(*root, "pci_host_bridge", std::move(properties))) {
            addPCIChildren(*host, devices / name, builder, firmwareTypes, 1, xhci);
        }
    }
    std::vector<PCIAddress> addresses;
    addresses.reserve(xhci.size());
    for (const auto& function : xhci) {
        addresses.push_back(function.device.address());
    }
    const auto locationIDs = uniqueControllerLocationIDs(addresses);
    for (std::size_t i = 0; i < xhci.size(); ++i) {
        SysfsXHCIService(xhci[i].device, root_ / "kernel" / "debug", locationIDs[i], &firmwareTypes)
            .addTo(*xhci[i].node, builder);
    }
    if (auto notices = firmwareTypes.notices(); !notices.empty()) {
        root->properties.editableDictionary()[linuxTreeKey::scanNotices] =
            PropertyArray(notices.begin(), notices.end());
    }
    return root;
}

void SysfsRegistrySource::addPCIChildren(NativeUSBNode& parent, const std::filesystem::path& directory,
                                         SysfsTreeBuilder& builder, FirmwarePortTypes& firmwareTypes,
                                         int depth, std::vector<XHCIFunction>& xhci) const {
    if (depth > SysfsTreeBuilder::maxDepth) {
        return;
    }
    for (const auto& name : sysfs::subdirectories(directory)) {
        const auto address = PCIAddress::parse(name);
        if (!address) {
            continue;
        }
        const SysfsPCIDevice device(directory / name, *address);
        NativeUSBNode* node = builder.add(parent, "IOPCIDevice", device.properties());
        if (!node) {
            return;
        }
        if (device.isXHCI()) {
            xhci.push_back({node, device});
        }
        // Functions behind a bridge sit in the bridge's folder.
        addPCIChildren(*node, device.directory(), builder, firmwareTypes, depth + 1, xhci);
    }
}

} // namespace korvane
