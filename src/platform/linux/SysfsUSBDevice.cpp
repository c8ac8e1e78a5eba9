#include "platform/linux/SysfsUSBDevice.h"

#include "platform/linux/SysfsReading.h"
#include "records/PortNumber.h"
#include "scanner/LinuxTreeKeys.h"

#include <cstdio>

namespace korvane {

namespace {

// Hubs have at most 15 ports in USB 2 and USB 3 alike; a root hub up to 255.
constexpr std::uint32_t maxHubPorts = 255;

std::string hex8(std::uint32_t value) {
    char text[12];
    std::snprintf(text, sizeof text, "%08x", value);
    return text;
}

// "<prefix><digits>" gives the digits' value.
std::optional<std::uint32_t> numberAfter(std::string_view name, std::string_view prefix) {
    if (!name.starts_with(prefix)) {
        return std::nullopt;
    }
    const auto value = sysfs::parseDecimal(name.substr(prefix.size()));
    if (!value || *value == 0 || *value > maxHubPorts) {
        return std::nullopt;
    }
    return value;
}

} // namespace

std::map<std::uint32_t, std::string> SysfsUSBDevice::childDevices(const std::filesystem::path& hubDirectory,
                                                                  const std::string& childPrefix) {
    std::map<std::uint32_t, std::string> children;
    for (const auto& name : sysfs::subdirectories(hubDirectory)) {
        if (auto port = numberAfter(name, childPrefix)) {
            children.emplace(*port, name);
        }
    }
    return children;
}

std::uint32_t SysfsUSBDevice::locationBelow(std::uint32_t hubLocation, int tier, std::uint32_t port) {
    // Tier 1 takes bits 20-23, tier 2 bits 16-19, and so on; the root ports'
    // numbers may run past 15 into the controller's byte, as they do on a
    // Mac (SS04 of a 16+6-port controller at 14 sits at 15000000).
    const int shift = 24 - 4 * tier;
    if (tier <= 1) {
        return hubLocation + (port << 20);
    }
    if (shift < 0) {
        return hubLocation;
    }
    return hubLocation | ((port & 0xf) << shift);
}

PropertyDictionary SysfsUSBDevice::properties() const {
    PropertyDictionary properties;
    const std::pair<const char*, const char*> texts[] = {{"USB Product Name", "product"},
                                                         {"USB Vendor Name", "manufacturer"},
                                                         {"USB Serial Number", "serial"}};
    for (const auto& [key, file] : texts) {
        if (auto text = sysfs::readText(directory_ / file)) {
            properties[key] = *text;
        }
    }
    if (auto product = properties.find("USB Product Name"); product != properties.end()) {
        properties["IOName"] = product->second;
    }
    if (auto vendor = sysfs::readHex(directory_ / "idVendor")) {
        properties["idVendor"] = std::int64_t{*vendor};
    }
    if (auto product = sysfs::readHex(directory_ / "idProduct")) {
        properties["idProduct"] = std::int64_t{*product};
    }
    if (auto address = sysfs::readDecimal(directory_ / "devnum")) {
        properties["USB Address"] = std::int64_t{*address};
    }
    if (auto speed = sysfs::readText(directory_ / "speed")) {
        properties[linuxTreeKey::sysfsSpeed] = *speed;
    }
    properties["locationID"] = std::int64_t{locationID_};
    properties[linuxTreeKey::sysfsName] = directory_.filename().string();
    return properties;
}

void SysfsUSBDevice::addTo(NativeUSBNode& parent, SysfsTreeBuilder& builder, int depth) const {
    if (depth > SysfsTreeBuilder::maxDepth) {
        return;
    }
    if (NativeUSBNode* device = builder.add(parent, "IOUSBHostDevice", properties())) {
        addInterfacesAndChildren(*device, builder, depth + 1);
    }
}

void SysfsUSBDevice::addInterfacesAndChildren(NativeUSBNode& device, SysfsTreeBuilder& builder,
                                              int depth) const {
    const std::string name = directory_.filename().string();
    std::map<std::uint32_t, NativeUSBNode*> hubPorts;
    for (const auto& entry : sysfs::subdirectories(directory_)) {
        if (!entry.starts_with(name + ':')) {
            continue;
        }
        const auto interfaceDirectory = directory_ / entry;
        PropertyDictionary interface;
        interface["IOName"] = sysfs::readText(interfaceDirectory / "interface").value_or(entry);
        for (const char* key :
             {"bInterfaceNumber", "bInterfaceClass", "bInterfaceSubClass", "bInterfaceProtocol"}) {
            if (auto value = sysfs::readHex(interfaceDirectory / key)) {
                interface[key] = std::int64_t{*value};
            }
        }
        NativeUSBNode* interfaceNode = builder.add(device, "IOUSBHostInterface", std::move(interface));
        if (!interfaceNode) {
            return;
        }
        // A hub's ports. They are named PortN, unlike the controller's own
        // ports, so the port discovery above never takes them for those.
        for (const auto& portEntry : sysfs::subdirectories(interfaceDirectory)) {
            const auto port = numberAfter(portEntry, name + "-port");
            if (!port || hubPorts.contains(*port)) {
                continue;
            }
            PropertyDictionary properties;
            properties["name"] = "Port" + std::to_string(*port);
            properties["port"] = portData(*port);
            properties["location"] = hex8(locationBelow(locationID_, tier_ + 1, *port));
            if (auto connectType = sysfs::readText(interfaceDirectory / portEntry / "connect_type")) {
                properties[linuxTreeKey::sysfsConnectType] = *connectType;
            }
            if (NativeUSBNode* portNode = builder.add(*interfaceNode, "usb_port", std::move(properties))) {
                hubPorts.emplace(*port, portNode);
            }
        }
    }
    for (const auto& [port, childName] : childDevices(directory_, name + '.')) {
        auto found = hubPorts.find(port);
        NativeUSBNode& parent = found != hubPorts.end() ? *found->second : device;
        SysfsUSBDevice(directory_ / childName, locationBelow(locationID_, tier_ + 1, port), tier_ + 1)
            .addTo(parent, builder, depth + 1);
    }
}

} // namespace korvane
