#include "dumpscan/DumpPortParser.h"

#include "dumpscan/DumpAnyNode.h"
#include "dumpscan/DumpLimits.h"
#include "dumpscan/DumpPattern.h"
#include "dumpscan/DumpPropertyReaders.h"
#include "dumpscan/DumpTextSearch.h"
#include "records/Connector.h"
#include "records/Text.h"
#include "scanner/PropertyReaders.h"

#include <algorithm>
#include <array>
#include <optional>
#include <set>

namespace korvane {

namespace {

const DumpPattern& portNodePattern() {
    static const DumpPattern pattern(
        R"(\+-o\s+((?:HS|SS|USR|PRT|RHUB|HSP|SSP)[A-Za-z0-9]{0,5})@([0-9A-Fa-f]+)\s+<class\s+(AppleUSB(?:20|30)?XHCI(?:Port)?|AppleUSBHostPort))",
        UREGEX_CASE_INSENSITIVE);
    return pattern;
}

const DumpPattern& loosePortNodePattern() {
    static const DumpPattern pattern(R"(\+-o\s+((?:HS|SS|USR|PRT)[A-Za-z0-9]{1,4})@([0-9A-Fa-f]+))",
                                     UREGEX_CASE_INSENSITIVE);
    return pattern;
}

bool isASCIISpace(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

// Whether either port expression could match: some "+-o", blanks, then a name
// beginning as one of the port prefixes does. Lines with other bytes than
// ASCII go to the expressions unfiltered.
bool mayHoldPort(std::string_view line) {
    if (line.size() > dumplimits::maxNodeLineBytes) {
        return false;
    }
    if (hasNonASCII(line)) {
        return true;
    }
    static constexpr std::array<std::string_view, 5> prefixes = {"hs", "ss", "us", "pr", "rh"};
    for (std::size_t at = findNodeMarker(line, 0); at != std::string_view::npos; at = findNodeMarker(line, at + 1)) {
        std::size_t i = at + 3;
        const std::size_t blanksStart = i;
        while (i < line.size() && isASCIISpace(line[i])) {
            ++i;
        }
        if (i == blanksStart || i + 2 > line.size()) {
            continue;
        }
        const std::string lowered{static_cast<char>(line[i] | 0x20), static_cast<char>(line[i + 1] | 0x20)};
        if (std::find(prefixes.begin(), prefixes.end(), lowered) != prefixes.end()) {
            return true;
        }
    }
    return false;
}

bool isPortClass(std::string_view className) {
    static constexpr std::array<std::string_view, 4> portClasses = {"IOService", "AppleUSBHostPort",
                                                                    "AppleUSB20XHCIPort", "AppleUSB30XHCIPort"};
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

std::int64_t inferredConnector(std::string_view name, std::string_view context) {
    if (containsIgnoringASCIICase(context, "bluetooth") || containsIgnoringASCIICase(context, "mystic light") ||
        containsIgnoringASCIICase(context, "internal") || uppercased(name).starts_with("USR")) {
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
        auto match = portNodePattern().firstMatch(text);
        if (!match) {
            match = loosePortNodePattern().firstMatch(text);
        }
        if (!match || match->size() < 3) {
            continue;
        }
        std::erase_if(enclosingEnds, [i](std::size_t blockEnd) { return blockEnd <= i; });
        if (enclosingEnds.size() >= dumplimits::maxPortNesting) {
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
            port.portData = inferredPortData(candidate.name);
        }
        const auto stated = firstIntegerProperty(connectorKeys, ownContext);
        port.connector = stated ? *stated : inferredConnector(candidate.name, full);
        port.activeDevice = activeDeviceName(full);
        port.comment = connectorCommentLabel(port.connector, port.name) + " - Location 0x" + port.location + " - " +
                       (port.activeDevice.empty() ? std::string("No active device") : "Active: " + port.activeDevice);
        ports.push_back(std::move(port));
    }

    sortPortsByNumberThenName(ports);
    return ports;
}

std::vector<USBPortMap> parsePorts(const std::vector<std::string_view>& lines, std::int64_t controllerDepth) {
    const DumpLines indexed(lines);
    return parsePorts(indexed, 0, indexed.size(), controllerDepth);
}

} // namespace korvane
