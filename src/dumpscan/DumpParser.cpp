#include "dumpscan/DumpParser.h"

#include "base/ASCIIText.h"
#include "base/Text.h"
#include "dumpscan/DumpPatterns.h"
#include "dumpscan/DumpPropertyReaders.h"
#include "records/Connector.h"
#include "records/PCIIdentityText.h"
#include "scanner/PropertyReaders.h"

#include <algorithm>
#include <array>
#include <optional>
#include <set>

namespace korvane {

namespace {

std::int64_t idProperty(const std::vector<std::string>& keys, const icu::UnicodeString& properties) {
    return decodeLittleEndianHex(firstPropertyHex(keys, properties)).value_or(0);
}

USBControllerMap controllerRecord(std::string name, std::string location, std::int64_t vendorID,
                                  std::int64_t deviceID, IDsNameResolver& names) {
    USBControllerMap controller;
    controller.name = std::move(name);
    controller.location = std::move(location);
    controller.vendorID = vendorID;
    controller.deviceID = deviceID;
    controller.ioNameMatch = pciNameMatch(vendorID, deviceID);
    controller.usbDeviceName = names.pciOrUSBName(vendorID, deviceID);
    return controller;
}

// Walks the node lines a pattern matches, passing over the whole block of each
// match; `visit` gets the line's index and the match's groups.
template <typename Visit>
void walkMatchingNodes(const DumpLines& lines, const RegularExpression& pattern, std::string_view lowerClass,
                       Visit visit) {
    const auto& marked = lines.markedLines();
    std::size_t m = 0;
    while (m < marked.size()) {
        const std::size_t i = marked[m];
        const std::string_view line = lines.line(i);
        if (!mayHoldNode(line, lowerClass)) {
            ++m;
            continue;
        }
        const auto match = firstNodeLineMatch(pattern, unicodeText(line));
        if (!match) {
            ++m;
            continue;
        }
        visit(i, *match);
        m = lines.firstMarkedAtOrAfter(lines.blockEnd(i));
    }
}

// The PCI pass: the controllers to add to `existing`.
std::vector<USBControllerMap> parsePCIUSBControllers(const DumpLines& lines,
                                                     const std::vector<USBControllerMap>& existing,
                                                     IDsNameResolver& names) {
    std::set<std::string> locationKeys;
    std::set<std::string> idKeys;
    for (const auto& controller : existing) {
        const std::string key = vendorDeviceText(controller.vendorID, controller.deviceID);
        locationKeys.insert(key + ":" + asciiLowercased(controller.location));
        idKeys.insert(key);
    }
    static const std::vector<std::string> classCodeKeys = {"class-code"};
    static const std::vector<std::string> vendorKeys = {"vendor-id"};
    static const std::vector<std::string> deviceKeys = {"device-id"};
    std::vector<USBControllerMap> found;
    walkMatchingNodes(lines, pciNodeExpression(), "iopcidevice",
                      [&](std::size_t i, const std::vector<std::string>& groups) {
                          const icu::UnicodeString properties = unicodeText(
                              lines.joined(i, std::min(lines.propertiesEnd(i), lines.blockEnd(i))));
                          std::optional<std::string> classCode = firstPropertyHex(classCodeKeys, properties);
                          if (classCode) {
                              *classCode = asciiLowercased(*classCode);
                          }
                          const auto classValue = decodeLittleEndianHex(classCode);
                          if (!classValue || (*classValue & 0xFFFFFF) != 0x0C0330) {
                              return;
                          }
                          const std::int64_t vendorID = idProperty(vendorKeys, properties);
                          const std::int64_t deviceID = idProperty(deviceKeys, properties);
                          if (vendorID < 1 || deviceID < 1) {
                              return;
                          }
                          std::string location = uppercased(groups[2]);
                          const std::string key = vendorDeviceText(vendorID, deviceID);
                          const std::string locationKey = key + ":" + asciiLowercased(location);
                          if (locationKeys.contains(locationKey) || idKeys.contains(key)) {
                              return;
                          }
                          locationKeys.insert(locationKey);
                          idKeys.insert(key);
                          found.push_back(controllerRecord(trimmed(groups[1]), std::move(location), vendorID,
                                                           deviceID, names));
                      });
    return found;
}

bool isPortClass(std::string_view className) {
    static constexpr std::array<std::string_view, 4> portClasses = {
        "IOService", "AppleUSBHostPort", "AppleUSB20XHCIPort", "AppleUSB30XHCIPort"};
    return std::find(portClasses.begin(), portClasses.end(), className) != portClasses.end();
}

struct Candidate {
    std::string name;
    std::string location;
    std::size_t line;
};

std::int64_t baseLocationByte(const std::vector<Candidate>& candidates) {
    std::optional<std::int64_t> smallest;
    for (const auto& candidate : candidates) {
        const std::string digits = withoutHexPrefixes(candidate.location);
        if (digits.size() < 2) {
            continue;
        }
        if (const auto value = parseSignedInteger(std::string_view(digits).substr(0, 2), 16)) {
            smallest = smallest ? std::min(*smallest, *value) : *value;
        }
    }
    return smallest.value_or(0);
}

} // namespace

std::string activeDeviceName(std::string_view full) {
    std::string name;
    bool isOwnLine = true;
    forEachAnyNode(full, [&](std::string nodeName, std::string className) {
        if (isOwnLine) {
            isOwnLine = false;
            return false;
        }
        if (isPortClass(className)) {
            return false;
        }
        name = std::move(nodeName);
        return !name.empty();
    });
    if (name.empty() && containsIgnoringASCIICase(full, "bluetooth")) {
        return "Bluetooth";
    }
    return name;
}

std::int64_t inferredConnectorFromDumpBlock(std::string_view name, std::string_view blockText) {
    if (containsIgnoringASCIICase(blockText, "bluetooth") ||
        containsIgnoringASCIICase(blockText, "mystic light") ||
        containsIgnoringASCIICase(blockText, "internal") || uppercased(name).starts_with("USR")) {
        return connector::internal;
    }
    return connector::usb3;
}

std::vector<USBPortMap> parsePorts(const DumpLines& lines, std::size_t begin, std::size_t end,
                                   std::int64_t controllerDepth) {
    end = std::min(end, lines.size());
    std::vector<Candidate> candidates;
    std::vector<std::size_t> enclosingEnds; // block ends of the candidates around the current line
    const auto& marked = lines.markedLines();
    for (std::size_t m = lines.firstMarkedAtOrAfter(begin); m < marked.size() && marked[m] < end; ++m) {
        const std::size_t i = marked[m];
        const std::string_view line = lines.line(i);
        if (lines.depth(i) <= controllerDepth || !mayHoldPort(line)) {
            continue;
        }
        const icu::UnicodeString text = unicodeText(line);
        auto match = portNodeExpression().firstMatch(text);
        if (!match) {
            match = loosePortNodeExpression().firstMatch(text);
        }
        if (!match || match->size() < 3) {
            continue;
        }
        std::erase_if(enclosingEnds, [i](std::size_t blockEnd) { return blockEnd <= i; });
        if (enclosingEnds.size() >= maximumPortNesting) {
            continue;
        }
        enclosingEnds.push_back(std::min(lines.blockEnd(i), end));
        candidates.push_back(Candidate{trimmed((*match)[1]), uppercased((*match)[2]), i});
    }

    const std::int64_t baseByte = baseLocationByte(candidates);
    static const std::vector<std::string> portKeys = {"port", "usb-port-number"};
    static const std::vector<std::string> connectorKeys = {"UsbConnector", "usb-port-type", "usb-connector",
                                                           "portType"};
    std::set<std::string> seenNames;
    std::vector<USBPortMap> ports;
    for (const auto& candidate : candidates) {
        if (!seenNames.insert(uppercased(candidate.name)).second) {
            continue;
        }
        const std::size_t blockEnd = std::min(lines.blockEnd(candidate.line), end);
        const std::size_t propertiesEnd = std::min(lines.propertiesEnd(candidate.line), blockEnd);
        const icu::UnicodeString ownContext = unicodeText(lines.joined(candidate.line, propertiesEnd));
        const std::string full = lines.joined(candidate.line, blockEnd);

        USBPortMap port;
        port.name = candidate.name;
        port.location = candidate.location;
        if (auto data = dataFromIORegHex(firstPropertyHex(portKeys, ownContext))) {
            port.portData = std::move(*data);
        } else if (auto inferred = inferredPortData(candidate.location, baseByte)) {
            port.portData = std::move(*inferred);
        } else {
            port.portData = portData(inferredPortNumberFromName(candidate.name));
        }
        const auto stated = firstIntegerProperty(connectorKeys, ownContext);
        port.connector = stated ? *stated : inferredConnectorFromDumpBlock(candidate.name, full);
        port.connectorSource = stated ? ConnectorSource::registry : ConnectorSource::inferred;
        port.activeDevice = activeDeviceName(full);
        port.comment =
            connectorCommentLabel(port.connector, port.name) + " - Location 0x" + port.location + " - " +
            (port.activeDevice.empty() ? std::string("No active device") : "Active: " + port.activeDevice);
        ports.push_back(std::move(port));
    }

    sortPortsByNumberThenName(ports);
    return ports;
}

std::vector<USBControllerMap> parseControllers(std::string_view text, IDsNameResolver& names) {
    const DumpLines lines(text);
    static const std::vector<std::string> vendorKeys = {"vendor-id", "idVendor"};
    static const std::vector<std::string> deviceKeys = {"device-id", "idProduct"};
    std::vector<USBControllerMap> controllers;
    walkMatchingNodes(lines, xhciNodeExpression(), "appleusbxhci",
                      [&](std::size_t i, const std::vector<std::string>& groups) {
                          const std::size_t blockEnd = lines.blockEnd(i);
                          const icu::UnicodeString properties =
                              unicodeText(lines.joined(i, std::min(lines.propertiesEnd(i), blockEnd)));
                          const std::int64_t vendorID = idProperty(vendorKeys, properties);
                          const std::int64_t deviceID = idProperty(deviceKeys, properties);
                          if (vendorID < 1 || deviceID < 1) {
                              return;
                          }
                          USBControllerMap controller = controllerRecord(
                              trimmed(groups[1]), uppercased(groups[2]), vendorID, deviceID, names);
                          controller.providerClass = trimmed(groups[3]);
                          controller.ports = parsePorts(lines, i, blockEnd, lines.depth(i));
                          controllers.push_back(std::move(controller));
                      });
    auto fromPCI = parsePCIUSBControllers(lines, controllers, names);
    controllers.insert(controllers.end(), std::make_move_iterator(fromPCI.begin()),
                       std::make_move_iterator(fromPCI.end()));
    sortControllersByIDsThenLocation(controllers);
    return controllers;
}

} // namespace korvane
