#include "scanner/PortDiscovery.h"

#include "base/ASCIIText.h"
#include "base/RegularExpression.h"
#include "base/Text.h"
#include "records/Connector.h"
#include "scanner/AttachedDeviceNames.h"
#include "scanner/LinuxTreeKeys.h"
#include "scanner/PropertyReaders.h"

#include <algorithm>
#include <optional>
#include <unordered_map>
#include <unordered_set>

namespace korvane {

namespace {

// Most nodes of a registry are no ports. This rules them out from the first
// letters of the raw name, before any upper-casing or regular expression;
// anything non-ASCII there goes the full way, since upper-casing can turn it
// into a prefix ("ß" becomes "SS").
bool couldBePortName(std::string_view rawName) {
    std::string_view base = rawName.substr(0, rawName.find('@'));
    if (base.size() == rawName.size()) {
        while (!base.empty() && isASCIISpace(base.front())) {
            base.remove_prefix(1);
        }
    }
    char head[3] = {0, 0, 0};
    for (std::size_t i = 0; i < 3; ++i) {
        if (i >= base.size()) {
            break;
        }
        if (static_cast<unsigned char>(base[i]) >= 0x80) {
            return true;
        }
        head[i] = asciiUppercased(base[i]);
    }
    const std::string_view two(head, 2);
    const std::string_view three(head, 3);
    return two == "HS" || two == "SS" || three == "USR" || three == "PRT";
}

struct StatedConnector {
    std::int64_t code = 0;
    ConnectorSource source = ConnectorSource::registry;
};

// A stated code's source is the registry's unless a Linux port node names
// another beside it (statedConnectorSource() has the rule).
std::optional<StatedConnector> explicitConnector(const NodeProperties& properties) {
    for (const char* key : {"UsbConnector", "usb-port-type", "portType"}) {
        if (auto value = intProperty(key, properties)) {
            return StatedConnector{*value,
                                   statedConnectorSource(properties.value(linuxTreeKey::connectorSource))};
        }
    }
    return std::nullopt;
}

void setConnector(USBPortMap& port, const StatedConnector& stated) {
    port.connector = stated.code;
    port.connectorSource = stated.source;
}

// The physical-location dictionary of a Linux port node, in the kernel's words.
std::optional<PortPlace> placeFrom(const NodeProperties& properties) {
    const auto found = properties.value(linuxTreeKey::physicalLocation);
    if (!found || !found->dictionary()) {
        return std::nullopt;
    }
    const PropertyDictionary& place = *found->dictionary();
    auto word = [&place](std::string_view key) {
        const auto value = place.find(key);
        return value != place.end() && value->second.text() ? std::string_view(*value->second.text())
                                                            : std::string_view();
    };
    namespace key = linuxTreeKey::place;
    return portPlaceFromWords(word(key::panel), word(key::verticalPosition), word(key::horizontalPosition),
                              intProperty(key::dock, place).value_or(0) != 0,
                              intProperty(key::lid, place).value_or(0) != 0);
}

ByteBuffer portDataFrom(const NodeProperties& properties, std::string_view name, std::string_view location) {
    for (const char* key : {"port", "usb-port-number"}) {
        if (auto data = dataProperty(key, properties)) {
            return *data;
        }
    }
    std::int64_t number = 0;
    if (auto value = intProperty("port", properties)) {
        number = *value;
    } else if (auto fallback = intProperty("usb-port-number", properties)) {
        number = *fallback;
    } else {
        number = inferredPortNumber(name, location);
    }
    // Values beyond 32 bits have no 4-byte form; only the low bits are kept.
    return portData(static_cast<std::uint32_t>(number));
}

void noteCompanion(std::map<std::string, CompanionReference>* companions, const std::string& name,
                   const NodeProperties& properties) {
    if (companions && !companions->contains(name)) {
        if (auto reference = companionReference(properties)) {
            companions->emplace(name, std::move(*reference));
        }
    }
}

void appendTablePorts(const NativeUSBNode& service, std::vector<USBPortMap>& ports,
                      std::unordered_set<std::string>& seen, AttachedDeviceNameCache& attachedNames,
                      std::map<std::string, CompanionReference>* companions) {
    const auto table = service.properties.value("ports");
    if (!table) {
        return;
    }
    const PropertyDictionary entries = normalizedDictionary(*table);
    std::vector<const std::string*> keys;
    keys.reserve(entries.size());
    for (const auto& entry : entries) {
        keys.push_back(&entry.first);
    }
    std::stable_sort(keys.begin(), keys.end(), [](const std::string* a, const std::string* b) {
        return localizedStandardLess(*a, *b);
    });

    for (const std::string* key : keys) {
        std::string name = portNameFrom(*key);
        if (!matchesPortNamePattern(name) || !seen.insert(name).second) {
            continue;
        }
        const NodeProperties properties(normalizedDictionary(entries.at(*key)));
        noteCompanion(companions, name, properties);
        USBPortMap port;
        port.location = service.location;
        port.portData = portDataFrom(properties, name, port.location);
        if (auto stated = explicitConnector(properties)) {
            setConnector(port, *stated);
        } else {
            port.connector =
                inferredConnectorFromNode(name, service, attachedNames.firstAttachedDeviceName(service));
        }
        port.place = placeFrom(properties);
        port.name = std::move(name);
        ports.push_back(std::move(port));
    }
}

} // namespace

std::string portNameFrom(std::string_view nodeNameOrKey) {
    const std::string base = baseName(nodeNameOrKey);
    return isASCII(base) ? asciiUppercased(base) : uppercased(base);
}

bool matchesPortNamePattern(std::string_view upperCasedBaseName) {
    static const RegularExpression portName("^(HS|SS|USR|PRT|HSP|SSP)[A-Z0-9]{1,5}$");
    return upperCasedBaseName.size() <= 64 && portName.isFoundIn(upperCasedBaseName);
}

bool isUSBPortNode(const NativeUSBNode& node) {
    if (!couldBePortName(node.name) || !matchesPortNamePattern(portNameFrom(node.name))) {
        return false;
    }
    if (node.className.find("Port") != std::string::npos ||
        node.className.find("XHCI") != std::string::npos) {
        return true;
    }
    const auto& properties = node.properties;
    return properties.contains("UsbConnector") || properties.contains("usb-port-type") ||
           properties.contains("port");
}

std::int64_t inferredPortNumber(std::string_view name, std::string_view location) {
    std::string_view lastPiece;
    std::size_t start = 0;
    while (start <= location.size()) {
        const std::size_t comma = std::min(location.find(',', start), location.size());
        if (comma > start) {
            lastPiece = location.substr(start, comma - start);
        }
        start = comma + 1;
    }
    if (!lastPiece.empty()) {
        if (auto value = parseSignedInteger(lastPiece, 16); value && *value > 0) {
            return *value;
        }
    }
    return inferredPortNumberFromName(name);
}

std::int64_t inferredConnectorFromNode(std::string_view name, const NativeUSBNode& node,
                                       std::string_view attachedDeviceName) {
    const std::string text = node.name + ' ' + node.className + ' ' + std::string(attachedDeviceName);
    // ASCII case folding finds the same words: no non-ASCII letter folds to a
    // letter of "bluetooth" or "internal" alone.
    if (containsIgnoringASCIICase(text, "bluetooth") || containsIgnoringASCIICase(text, "internal") ||
        name.starts_with("USR")) {
        return connector::internal;
    }
    return connector::usb3;
}

std::vector<USBPortMap> scanPorts(const NativeUSBNode& service, IDsNameResolver& names,
                                  std::map<std::string, CompanionReference>* companions) {
    std::vector<USBPortMap> ports;
    std::unordered_set<std::string> seen;
    AttachedDeviceNameCache attachedNames(names);
    appendTablePorts(service, ports, seen, attachedNames, companions);

    std::unordered_map<std::string, std::size_t> recordIndex;
    for (std::size_t i = 0; i < ports.size(); ++i) {
        recordIndex.emplace(ports[i].name, i);
    }

    for (const NativeUSBNode* node : flatten(service)) {
        if (!isUSBPortNode(*node)) {
            continue;
        }
        std::string name = portNameFrom(node->name);
        noteCompanion(companions, name, node->properties);
        std::string active = attachedNames.firstAttachedDeviceName(*node);
        if (seen.contains(name)) {
            if (active.empty()) {
                continue;
            }
            const auto found = recordIndex.find(name);
            if (found == recordIndex.end()) {
                continue;
            }
            USBPortMap& record = ports[found->second];
            record.activeDevice = std::move(active);
            if (auto stated = explicitConnector(node->properties)) {
                setConnector(record, *stated);
            }
            continue;
        }
        seen.insert(name);
        USBPortMap port;
        port.location = node->location;
        port.portData = portDataFrom(node->properties, name, port.location);
        if (auto stated = explicitConnector(node->properties)) {
            setConnector(port, *stated);
        } else {
            port.connector = inferredConnectorFromNode(name, *node, active);
        }
        port.place = placeFrom(node->properties);
        port.activeDevice = std::move(active);
        recordIndex.emplace(name, ports.size());
        port.name = std::move(name);
        ports.push_back(std::move(port));
    }

    sortPortsByNumberThenName(ports);
    return ports;
}

} // namespace korvane
