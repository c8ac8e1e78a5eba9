#include "platform/linux/SysfsPCIDevice.h"

#include "base/Text.h"
#include "platform/linux/SysfsReading.h"
#include "records/PortNumber.h"

#include <cstdio>

namespace korvane {

namespace {

bool isHexDigits(std::string_view text, std::size_t count) {
    if (text.size() != count) {
        return false;
    }
    for (char c : text) {
        if (hexDigitValue(c) < 0) {
            return false;
        }
    }
    return true;
}

std::string lowerHex(std::uint32_t value, int width = 0) {
    char text[16];
    std::snprintf(text, sizeof text, "%0*x", width, value);
    return text;
}

ByteBuffer nulTerminated(std::string_view text) {
    ByteBuffer bytes(text.begin(), text.end());
    bytes.push_back(0);
    return bytes;
}

} // namespace

std::optional<PCIAddress> PCIAddress::parse(std::string_view name) {
    // dddd:bb:dd.f
    if (name.size() != 12 || name[4] != ':' || name[7] != ':' || name[10] != '.' ||
        !isHexDigits(name.substr(0, 4), 4) || !isHexDigits(name.substr(5, 2), 2) ||
        !isHexDigits(name.substr(8, 2), 2) || name[11] < '0' || name[11] > '7') {
        return std::nullopt;
    }
    PCIAddress address;
    address.domain = *sysfs::parseHex(name.substr(0, 4));
    address.bus = *sysfs::parseHex(name.substr(5, 2));
    address.device = *sysfs::parseHex(name.substr(8, 2));
    address.function = static_cast<std::uint32_t>(name[11] - '0');
    return address;
}

std::string PCIAddress::debugText() const {
    return std::to_string(bus) + ':' + std::to_string(device) + ':' + std::to_string(function);
}

std::optional<std::string> firmwareNodePath(const std::filesystem::path& deviceDirectory) {
    return sysfs::readText(deviceDirectory / "firmware_node" / "path");
}

std::optional<std::string> firmwareNodeName(const std::filesystem::path& deviceDirectory) {
    const auto path = firmwareNodePath(deviceDirectory);
    if (!path) {
        return std::nullopt;
    }
    std::string_view last = *path;
    if (const auto dot = last.find_last_of(".\\"); dot != std::string_view::npos) {
        last.remove_prefix(dot + 1);
    }
    while (!last.empty() && last.back() == '_') {
        last.remove_suffix(1);
    }
    if (last.empty()) {
        return std::nullopt;
    }
    return std::string(last);
}

bool SysfsPCIDevice::isXHCI() const {
    const auto classCode = sysfs::readHex(directory_ / "class");
    return classCode && *classCode == 0x0c0330;
}

PropertyDictionary SysfsPCIDevice::properties() const {
    PropertyDictionary properties;
    const auto vendor = sysfs::readHex(directory_ / "vendor");
    const auto device = sysfs::readHex(directory_ / "device");
    const auto subsystemVendor = sysfs::readHex(directory_ / "subsystem_vendor");
    const auto subsystem = sysfs::readHex(directory_ / "subsystem_device");
    const auto revision = sysfs::readHex(directory_ / "revision");
    const auto classCode = sysfs::readHex(directory_ / "class");

    const std::pair<const char*, const std::optional<std::uint32_t>&> words[] = {
        {"vendor-id", vendor},       {"device-id", device},     {"subsystem-vendor-id", subsystemVendor},
        {"subsystem-id", subsystem}, {"revision-id", revision}, {"class-code", classCode}};
    for (const auto& [key, value] : words) {
        if (value) {
            properties[key] = portData(*value);
        }
    }

    std::string ioName;
    if (auto firmwareName = firmwareNodeName(directory_)) {
        ioName = *firmwareName;
    } else if (vendor && device) {
        ioName = "pci" + lowerHex(*vendor) + ',' + lowerHex(*device);
    }
    if (!ioName.empty()) {
        properties["IOName"] = ioName;
        properties["name"] = nulTerminated(ioName);
    }

    ByteBuffer compatible;
    auto appendCompatible = [&compatible](const std::string& text) {
        compatible.insert(compatible.end(), text.begin(), text.end());
        compatible.push_back(0);
    };
    if (subsystemVendor && subsystem) {
        appendCompatible("pci" + lowerHex(*subsystemVendor) + ',' + lowerHex(*subsystem));
    }
    if (vendor && device) {
        appendCompatible("pci" + lowerHex(*vendor) + ',' + lowerHex(*device));
    }
    if (classCode) {
        appendCompatible("pciclass," + lowerHex(*classCode, 6));
    }
    if (!compatible.empty()) {
        properties["compatible"] = std::move(compatible);
    }
    if (auto path = firmwareNodePath(directory_)) {
        properties["acpi-path"] = *path;
    }
    properties["pcidebug"] = address_.debugText();
    return properties;
}

} // namespace korvane
