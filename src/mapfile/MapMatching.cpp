#include "mapfile/MapMatching.h"

#include "records/Connector.h"
#include "records/PortNumber.h"
#include "scanner/PropertyReaders.h"

#include <algorithm>
#include <sstream>

namespace korvane {

namespace {

// Whether one IOPCIPrimaryMatch text ("0xa36d8086 0x15e98086&0xffffffff")
// takes the controller: device in the high half, vendor in the low, each
// word compared under its mask.
bool primaryMatchTakes(const std::string& primaryMatch, const USBControllerMap& controller) {
    const auto identity = static_cast<std::uint64_t>((controller.deviceID & 0xffff) << 16) |
                          static_cast<std::uint64_t>(controller.vendorID & 0xffff);
    auto hexValue = [](std::string_view text) -> std::optional<std::uint64_t> {
        if (text.starts_with("0x") || text.starts_with("0X")) {
            text.remove_prefix(2);
        }
        const auto value = parseSignedInteger(text, 16);
        return value && *value >= 0 ? std::optional<std::uint64_t>(static_cast<std::uint64_t>(*value))
                                    : std::nullopt;
    };
    std::istringstream words(primaryMatch);
    std::string word;
    while (words >> word) {
        const auto ampersand = word.find('&');
        const auto value = hexValue(std::string_view(word).substr(0, ampersand));
        const auto mask = ampersand == std::string::npos
                              ? std::optional<std::uint64_t>(0xffffffff)
                              : hexValue(std::string_view(word).substr(ampersand + 1));
        if (value && mask && (identity & *mask) == (*value & *mask)) {
            return true;
        }
    }
    return false;
}

std::vector<const USBControllerMap*> controllersFor(const PackagePort& port,
                                                    const std::vector<USBControllerMap>& scanned) {
    std::vector<const USBControllerMap*> named;
    for (const auto& controller : scanned) {
        for (const auto& name : port.controllerNames) {
            if (controller.name == name) {
                named.push_back(&controller);
                break;
            }
        }
    }
    if (port.primaryMatch.empty()) {
        return named;
    }
    // A like-named controller of other IDs is another controller: a
    // Thunderbolt XHC3 of one machine is not the XHC3 of the next.
    std::vector<const USBControllerMap*> matching;
    for (const auto* controller : named) {
        if (primaryMatchTakes(port.primaryMatch, *controller)) {
            matching.push_back(controller);
        }
    }
    return matching;
}

} // namespace

MapScanMatch matchMapToScan(const USBMapFile& map, const std::vector<USBControllerMap>& scanned) {
    std::set<std::string> present;
    for (const auto& controller : scanned) {
        for (const auto& port : controller.ports) {
            present.insert(usbPortStableID(controller, port));
        }
    }
    MapScanMatch match;
    for (const auto& key : map.portKeys()) {
        if (present.contains(key)) {
            match.matchedKeys.insert(key);
        } else {
            match.missingKeys.push_back(key);
        }
    }
    return match;
}

PackageScanMatch matchPackageToScan(const PortMapPackage& package,
                                    const std::vector<USBControllerMap>& scanned) {
    PackageScanMatch match;
    for (const auto& packagePort : package.ports) {
        const std::string controllerText =
            packagePort.controllerNames.empty() ? "(no IONameMatch)" : packagePort.controllerNames.front();
        // Two controllers of one name are told apart by the PCI IDs they match.
        auto& [landed, ports] = match.byController[packagePort.primaryMatch.empty()
                                                       ? controllerText
                                                       : controllerText + " " + packagePort.primaryMatch];
        ++ports;
        const std::string label =
            controllerText + " " + packagePort.name +
            (packagePort.number ? " (port " + std::to_string(*packagePort.number) + ")" : std::string());
        if (!packagePort.number) {
            match.unmatched.push_back(label + ": the package gives no port number");
            continue;
        }
        const auto controllers = controllersFor(packagePort, scanned);
        if (controllers.empty()) {
            const bool isNamed = std::any_of(scanned.begin(), scanned.end(), [&](const auto& controller) {
                return controller.name == controllerText;
            });
            match.unmatched.push_back(
                label + (isNamed ? ": the " + controllerText +
                                       " of this machine has other PCI IDs than the "
                                       "package's (" +
                                       packagePort.primaryMatch + ")"
                                 : ": no controller named " + controllerText + " on this machine"));
            continue;
        }
        bool isMatched = false;
        for (const auto* controller : controllers) {
            for (const auto& port : controller->ports) {
                const auto number = portNumber(port.portData);
                if (!number || *number != *packagePort.number) {
                    continue;
                }
                const auto key = usbPortStableID(*controller, port);
                match.selectedPortIDs.insert(key);
                if (packagePort.connector && isConnectorCode(*packagePort.connector)) {
                    match.connectors[key] = *packagePort.connector;
                }
                isMatched = true;
            }
        }
        if (isMatched) {
            ++match.matchedPorts;
            ++landed;
        } else {
            match.unmatched.push_back(label + ": " + controllerText + " has no port " +
                                      std::to_string(*packagePort.number) + " on this machine");
        }
    }
    return match;
}

std::string portMatchSummary(std::size_t matched, std::size_t total, std::string_view missing) {
    std::string text = std::to_string(matched) + " of " + std::to_string(total) + " ports matched";
    if (matched < total) {
        const std::size_t left = total - matched;
        text += "; " + std::to_string(left) + " " + std::string(missing) + (left == 1 ? "" : "s") +
                " not on this machine";
    }
    return text;
}

} // namespace korvane
