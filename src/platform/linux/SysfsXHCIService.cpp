#include "platform/linux/SysfsXHCIService.h"

#include "base/Text.h"
#include "platform/linux/SysfsReading.h"
#include "platform/linux/SysfsUSBDevice.h"
#include "platform/linux/XHCIPortLayout.h"
#include "records/PortNumber.h"
#include "scanner/LinuxTreeKeys.h"
#include "scanner/PortDiscovery.h"

#include <algorithm>
#include <cstdio>

namespace korvane {

namespace {

constexpr std::uint32_t maxRootHubPorts = 255;

struct RootHub {
    std::uint32_t bus = 0;
    bool isUSB3 = false;
    std::filesystem::path directory;
};

std::string hex8(std::uint32_t value) {
    char text[12];
    std::snprintf(text, sizeof text, "%08x", value);
    return text;
}

std::string defaultPortName(bool isUSB3, std::uint32_t position) {
    char text[16];
    std::snprintf(text, sizeof text, "%s%02u", isUSB3 ? "SS" : "HS", position);
    return text;
}

bool isSuperSpeedRootHub(const std::filesystem::path& directory) {
    if (auto speed = sysfs::readDecimal(directory / "speed")) {
        return *speed >= 5000;
    }
    // " 3.00", " 3.10": the root hub's bcdUSB.
    if (auto version = sysfs::readText(directory / "version")) {
        return !version->empty() && (*version)[0] >= '3' && (*version)[0] <= '9';
    }
    return false;
}

std::vector<RootHub> rootHubsOf(const std::filesystem::path& pciDirectory) {
    std::vector<RootHub> hubs;
    for (const auto& name : sysfs::subdirectories(pciDirectory)) {
        if (!name.starts_with("usb")) {
            continue;
        }
        if (auto bus = sysfs::parseDecimal(std::string_view(name).substr(3)); bus && *bus > 0) {
            hubs.push_back({*bus, isSuperSpeedRootHub(pciDirectory / name), pciDirectory / name});
        }
    }
    std::stable_sort(hubs.begin(), hubs.end(),
                     [](const RootHub& a, const RootHub& b) { return !a.isUSB3 && b.isUSB3; });
    return hubs;
}

// Port k -> its folder, for a root hub whose port entries exist. Recordings
// made with umockdev have none (it skips devices without a subsystem); their
// ports come from maxchild, with no folder.
std::vector<std::pair<std::uint32_t, std::optional<std::filesystem::path>>> portsOf(const RootHub& hub) {
    std::vector<std::pair<std::uint32_t, std::optional<std::filesystem::path>>> ports;
    const auto interface = hub.directory / (std::to_string(hub.bus) + "-0:1.0");
    const std::string prefix = "usb" + std::to_string(hub.bus) + "-port";
    for (const auto& name : sysfs::subdirectories(interface)) {
        if (!name.starts_with(prefix)) {
            continue;
        }
        auto position = sysfs::parseDecimal(std::string_view(name).substr(prefix.size()));
        if (position && *position > 0 && *position <= maxRootHubPorts) {
            ports.emplace_back(*position, interface / name);
        }
    }
    if (ports.empty()) {
        const auto count =
            std::min(sysfs::readDecimal(hub.directory / "maxchild").value_or(0), maxRootHubPorts);
        for (std::uint32_t position = 1; position <= count; ++position) {
            ports.emplace_back(position, std::nullopt);
        }
    }
    std::sort(ports.begin(), ports.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
    return ports;
}

// "usb2-port3" -> bus 2, port 3.
std::optional<std::pair<std::uint32_t, std::uint32_t>> parsePortEntryName(std::string_view name) {
    if (!name.starts_with("usb")) {
        return std::nullopt;
    }
    const auto dash = name.find("-port");
    if (dash == std::string_view::npos) {
        return std::nullopt;
    }
    const auto bus = sysfs::parseDecimal(name.substr(3, dash - 3));
    const auto port = sysfs::parseDecimal(name.substr(dash + 5));
    if (!bus || !port) {
        return std::nullopt;
    }
    return std::pair{*bus, *port};
}

// The kernel's words for where the firmware's _PLD puts the socket; "yes"
// and "no" become 1 and 0. None without the folder (no firmware node).
std::optional<PropertyDictionary> physicalLocation(const std::filesystem::path& directory) {
    PropertyDictionary place;
    namespace placeKey = linuxTreeKey::place;
    for (const char* key : {placeKey::panel, placeKey::verticalPosition, placeKey::horizontalPosition}) {
        if (auto word = sysfs::readText(directory / key)) {
            place[key] = *word;
        }
    }
    for (const char* key : {placeKey::dock, placeKey::lid}) {
        if (auto answer = sysfs::readText(directory / key)) {
            place[key] = std::int64_t{*answer == "yes"};
        }
    }
    if (place.empty()) {
        return std::nullopt;
    }
    return place;
}

const char* numberSourceText(SysfsXHCIService::NumberSource source) {
    switch (source) {
    case SysfsXHCIService::NumberSource::firmware:
        return "firmware (_ADR)";
    case SysfsXHCIService::NumberSource::debugfs:
        return "xHCI driver (debugfs)";
    case SysfsXHCIService::NumberSource::rootHubPosition:
        break;
    }
    return "guessed from the root-hub position (USB 2 ports first); not firmware data";
}

} // namespace

std::vector<SysfsXHCIService::RootPort> SysfsXHCIService::rootPorts() const {
    const auto layout = XHCIPortLayout::read(debugfsRoot_ / "usb" / "xhci" / pci_.directory().filename());
    std::vector<RootPort> ports;
    std::uint32_t usb2Count = 0;
    std::vector<std::optional<std::string>> peerLinks;
    for (const auto& hub : rootHubsOf(pci_.directory())) {
        for (const auto& [position, directory] : portsOf(hub)) {
            RootPort port;
            port.bus = hub.bus;
            port.isUSB3 = hub.isUSB3;
            port.position = position;
            port.directory = directory;
            std::optional<std::string> connectType;
            std::optional<std::string> peer;
            if (directory) {
                if (auto firmwareName = firmwareNodeName(*directory)) {
                    if (std::string upper = uppercased(*firmwareName); matchesPortNamePattern(upper)) {
                        port.name = upper;
                    }
                }
                if (auto address = sysfs::readHex(*directory / "firmware_node" / "adr");
                    address && *address > 0 && *address <= maxRootHubPorts) {
                    port.number = *address;
                    port.numberSource = NumberSource::firmware;
                }
                connectType = sysfs::readText(*directory / "connect_type");
                peer = sysfs::linkTargetName(*directory / "peer");
            }
            if (port.name.empty()) {
                port.name = defaultPortName(hub.isUSB3, position);
            }
            if (port.numberSource != NumberSource::firmware && layout) {
                const auto& numbers = hub.isUSB3 ? layout->usb3 : layout->usb2;
                if (position <= numbers.size()) {
                    port.number = numbers[position - 1];
                    port.numberSource = NumberSource::debugfs;
                }
            }
            if (connectType == "hardwired") {
                port.connector = 255;
            } else if (hub.isUSB3) {
                port.connector = 3;
            } else if (peer) {
                port.connector = 3;
                port.connectorSource = ConnectorSource::peer;
            } else if (connectType == "hotplug") {
                port.connector = 0;
            }
            // The firmware's word wins where it gives one. Each half of a USB 3
            // connector asks its own node, so halves the firmware types
            // differently stay different.
            if (directory && firmwareTypes_) {
                if (auto path = firmwareNodePath(*directory)) {
                    if (auto type = firmwareTypes_->connectorType(*path, port.name)) {
                        port.connector = *type;
                        port.connectorSource = ConnectorSource::firmware;
                    }
                }
            }
            if (!hub.isUSB3) {
                ++usb2Count;
            }
            ports.push_back(std::move(port));
            peerLinks.push_back(std::move(peer));
        }
    }
    for (std::size_t i = 0; i < ports.size(); ++i) {
        auto& port = ports[i];
        if (port.numberSource == NumberSource::rootHubPosition) {
            port.number = port.isUSB3 ? port.position + usb2Count : port.position;
        }
        if (!peerLinks[i]) {
            continue;
        }
        if (auto peer = parsePortEntryName(*peerLinks[i])) {
            for (const auto& other : ports) {
                if (other.bus == peer->first && other.position == peer->second) {
                    port.peerName = other.name;
                }
            }
        }
    }
    return ports;
}

std::vector<std::uint32_t> uniqueControllerLocationIDs(const std::vector<PCIAddress>& controllers) {
    constexpr std::uint32_t values = 256;
    std::vector<bool> isTaken(values, false);
    std::vector<std::optional<std::uint32_t>> topBytes(controllers.size());
    for (std::size_t i = 0; i < controllers.size(); ++i) {
        const std::uint32_t own = controllers[i].device % values;
        if (!isTaken[own]) {
            isTaken[own] = true;
            topBytes[i] = own;
        }
    }
    std::vector<std::uint32_t> locationIDs;
    locationIDs.reserve(controllers.size());
    for (std::size_t i = 0; i < controllers.size(); ++i) {
        std::uint32_t value = controllers[i].device % values;
        if (!topBytes[i]) {
            // More than 256 controllers can't all be told apart; past that
            // the values repeat rather than run out.
            for (std::uint32_t step = 1; step < values && isTaken[value]; ++step) {
                value = (value + 1) % values;
            }
            isTaken[value] = true;
        }
        locationIDs.push_back(value << 24);
    }
    return locationIDs;
}

void SysfsXHCIService::addTo(NativeUSBNode& pciNode, SysfsTreeBuilder& builder) const {
    const std::uint32_t controllerLocation = locationID_;
    PropertyDictionary service;
    if (auto name = pciNode.properties.value("IOName")) {
        service["name"] = std::move(*name);
    }
    service["IOPersonalityPublisher"] = "com.apple.driver.usb.AppleUSBXHCIPCI";
    service["locationID"] = std::int64_t{controllerLocation};
    service[linuxTreeKey::pciAddress] = pci_.directory().filename().string();
    NativeUSBNode* serviceNode = builder.add(pciNode, "xhci_hcd", std::move(service));
    if (!serviceNode) {
        return;
    }
    for (const auto& port : rootPorts()) {
        const std::uint32_t locationID = SysfsUSBDevice::locationBelow(controllerLocation, 1, port.number);
        PropertyDictionary properties;
        properties["name"] = port.name;
        properties["port"] = portData(port.number);
        properties[linuxTreeKey::portNumberSource] = numberSourceText(port.numberSource);
        if (port.connector) {
            properties["UsbConnector"] = *port.connector;
            properties[linuxTreeKey::connectorSource] =
                std::string(connectorSourceName(port.connectorSource));
        }
        properties["locationID"] = std::int64_t{locationID};
        properties["location"] = hex8(locationID);
        if (!port.peerName.empty()) {
            properties[linuxTreeKey::peer] = port.peerName;
        }
        properties[linuxTreeKey::usbBus] = std::int64_t{port.bus};
        if (port.directory) {
            if (auto connectType = sysfs::readText(*port.directory / "connect_type")) {
                properties[linuxTreeKey::sysfsConnectType] = *connectType;
            }
            if (auto place = physicalLocation(*port.directory / "physical_location")) {
                properties[linuxTreeKey::physicalLocation] = std::move(*place);
            }
        }
        NativeUSBNode* portNode = builder.add(*serviceNode, "usb_port", std::move(properties));
        if (!portNode) {
            return;
        }
        const auto hubDirectory = pci_.directory() / ("usb" + std::to_string(port.bus));
        const auto children = SysfsUSBDevice::childDevices(hubDirectory, std::to_string(port.bus) + '-');
        if (auto child = children.find(port.position); child != children.end()) {
            SysfsUSBDevice(hubDirectory / child->second, locationID, 1).addTo(*portNode, builder, 4);
        }
    }
}

} // namespace korvane
