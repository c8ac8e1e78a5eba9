#include "dumpscan/DumpControllerParser.h"

#include "dumpscan/DumpLimits.h"
#include "dumpscan/DumpPattern.h"
#include "dumpscan/DumpPortParser.h"
#include "dumpscan/DumpPropertyReaders.h"
#include "dumpscan/DumpTextSearch.h"
#include "records/Text.h"
#include "scanner/PropertyReaders.h"

#include <algorithm>
#include <cstdio>
#include <set>

namespace korvane {

namespace {

const DumpPattern& xhciNodePattern() {
    static const DumpPattern pattern(R"(\+-o\s+(.+?)@([0-9A-Fa-f]+)\s+<class\s+(AppleUSBXHCI[A-Za-z0-9_]*))",
                                     UREGEX_CASE_INSENSITIVE);
    return pattern;
}

const DumpPattern& pciNodePattern() {
    static const DumpPattern pattern(R"(\+-o\s+(.+?)@([0-9A-Fa-f,]+)\s+<class\s+IOPCIDevice)",
                                     UREGEX_CASE_INSENSITIVE);
    return pattern;
}

// Whether a line can match a node expression whose class part is `lowerClass`.
bool mayHoldNode(std::string_view line, std::string_view lowerClass) {
    if (line.size() > dumplimits::maxNodeLineBytes) {
        return false;
    }
    return hasNonASCII(line) ||
           (containsIgnoringASCIICase(line, "<class") && containsIgnoringASCIICase(line, lowerClass));
}

std::string hexID(std::int64_t value) {
    char buffer[24];
    std::snprintf(buffer, sizeof buffer, "%04llx", static_cast<unsigned long long>(value));
    return buffer;
}

std::string idKey(std::int64_t vendorID, std::int64_t deviceID) { return hexID(vendorID) + ":" + hexID(deviceID); }

std::string lowercasedASCII(std::string text) {
    for (char& c : text) {
        if (c >= 'A' && c <= 'Z') {
            c = static_cast<char>(c - 'A' + 'a');
        }
    }
    return text;
}

std::int64_t idProperty(const std::vector<std::string>& keys, const icu::UnicodeString& properties) {
    return decodeLittleEndianHex(firstPropertyHex(keys, properties)).value_or(0);
}

std::string controllerName(IDsNameResolver& names, std::int64_t vendorID, std::int64_t deviceID) {
    std::string name = names.pciName(vendorID, deviceID);
    return name.empty() ? names.usbName(vendorID, deviceID) : name;
}

USBControllerMap controllerRecord(std::string name, std::string location, std::int64_t vendorID,
                                  std::int64_t deviceID, IDsNameResolver& names) {
    USBControllerMap controller;
    controller.name = std::move(name);
    controller.location = std::move(location);
    controller.vendorID = vendorID;
    controller.deviceID = deviceID;
    controller.ioNameMatch = "pci" + hexID(vendorID) + "," + hexID(deviceID);
    controller.usbDeviceName = controllerName(names, vendorID, deviceID);
    return controller;
}

// Walks the node lines a pattern matches, passing over the whole block of each
// match; `visit` gets the line's index and the match's groups.
template <typename Visit>
void walkMatchingNodes(const DumpLines& lines, const DumpPattern& pattern, std::string_view lowerClass, Visit visit) {
    const auto& marked = lines.markedLines();
    std::size_t m = 0;
    while (m < marked.size()) {
        const std::size_t i = marked[m];
        const std::string_view line = lines.line(i);
        if (!mayHoldNode(line, lowerClass)) {
            ++m;
            continue;
        }
        const auto match = pattern.firstNodeLineMatch(unicodeText(line));
        if (!match) {
            ++m;
            continue;
        }
        visit(i, *match);
        m = lines.firstMarkedAtOrAfter(lines.blockEnd(i));
    }
}

void sortControllers(std::vector<USBControllerMap>& controllers) {
    std::stable_sort(controllers.begin(), controllers.end(), [](const USBControllerMap& a, const USBControllerMap& b) {
        if (a.vendorID != b.vendorID) {
            return a.vendorID < b.vendorID;
        }
        if (a.deviceID != b.deviceID) {
            return a.deviceID < b.deviceID;
        }
        if (a.location != b.location) {
            return localizedStandardLess(a.location, b.location);
        }
        return localizedStandardLess(a.name, b.name);
    });
}

} // namespace

std::vector<USBControllerMap> parsePCIUSBControllers(const DumpLines& lines,
                                                     const std::vector<USBControllerMap>& existing,
                                                     IDsNameResolver& names) {
    std::set<std::string> locationKeys;
    std::set<std::string> idKeys;
    for (const auto& controller : existing) {
        const std::string key = idKey(controller.vendorID, controller.deviceID);
        locationKeys.insert(key + ":" + lowercasedASCII(controller.location));
        idKeys.insert(key);
    }
    static const std::vector<std::string> classCodeKeys = {"class-code"};
    static const std::vector<std::string> vendorKeys = {"vendor-id"};
    static const std::vector<std::string> deviceKeys = {"device-id"};
    std::vector<USBControllerMap> found;
    walkMatchingNodes(lines, pciNodePattern(), "iopcidevice", [&](std::size_t i, const std::vector<std::string>& groups) {
        const icu::UnicodeString properties =
            unicodeText(lines.joined(i, std::min(lines.propertiesEnd(i), lines.blockEnd(i))));
        std::optional<std::string> classCode = firstPropertyHex(classCodeKeys, properties);
        if (classCode) {
            *classCode = lowercasedASCII(*classCode);
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
        const std::string key = idKey(vendorID, deviceID);
        const std::string locationKey = key + ":" + lowercasedASCII(location);
        if (locationKeys.contains(locationKey) || idKeys.contains(key)) {
            return;
        }
        locationKeys.insert(locationKey);
        idKeys.insert(key);
        found.push_back(controllerRecord(trimmed(groups[1]), std::move(location), vendorID, deviceID, names));
    });
    return found;
}

std::vector<USBControllerMap> parsePCIUSBControllers(std::string_view text,
                                                     const std::vector<USBControllerMap>& existing,
                                                     IDsNameResolver& names) {
    return parsePCIUSBControllers(DumpLines(text), existing, names);
}

std::vector<USBControllerMap> parseControllers(std::string_view text, IDsNameResolver& names) {
    const DumpLines lines(text);
    static const std::vector<std::string> vendorKeys = {"vendor-id", "idVendor"};
    static const std::vector<std::string> deviceKeys = {"device-id", "idProduct"};
    std::vector<USBControllerMap> controllers;
    walkMatchingNodes(lines, xhciNodePattern(), "appleusbxhci", [&](std::size_t i, const std::vector<std::string>& groups) {
        const std::size_t blockEnd = lines.blockEnd(i);
        const icu::UnicodeString properties = unicodeText(lines.joined(i, std::min(lines.propertiesEnd(i), blockEnd)));
        const std::int64_t vendorID = idProperty(vendorKeys, properties);
        const std::int64_t deviceID = idProperty(deviceKeys, properties);
        if (vendorID < 1 || deviceID < 1) {
            return;
        }
        USBControllerMap controller =
            controllerRecord(trimmed(groups[1]), uppercased(groups[2]), vendorID, deviceID, names);
        controller.providerClass = trimmed(groups[3]);
        controller.ports = parsePorts(lines, i, blockEnd, lines.depth(i));
        controllers.push_back(std::move(controller));
    });
    auto fromPCI = parsePCIUSBControllers(lines, controllers, names);
    controllers.insert(controllers.end(), std::make_move_iterator(fromPCI.begin()),
                       std::make_move_iterator(fromPCI.end()));
    sortControllers(controllers);
    return controllers;
}

} // namespace korvane
