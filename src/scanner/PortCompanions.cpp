#include "scanner/PortCompanions.h"

#include "records/PortNumber.h"
#include "scanner/LinuxTreeKeys.h"
#include "scanner/PortDiscovery.h"
#include "scanner/PropertyReaders.h"

namespace korvane {

namespace {

std::optional<std::string> textOrNameData(const std::optional<PropertyValue>& value) {
    if (!value) {
        return std::nullopt;
    }
    if (const auto* text = value->text()) {
        return *text;
    }
    if (const auto* bytes = value->bytes()) {
        return stringFromNullTerminatedData(*bytes);
    }
    return std::nullopt;
}

struct PortIndex {
    std::size_t controller;
    std::size_t port;
};

class CompanionResolver {
  public:
    CompanionResolver(const std::vector<USBControllerMap>& controllers,
                      const std::vector<std::map<std::string, CompanionReference>>& references)
        : controllers_(controllers), references_(references) {}

    std::optional<PortIndex> companionOf(PortIndex place) const {
        const CompanionReference* reference = referenceOf(place);
        if (!reference) {
            return std::nullopt;
        }
        std::optional<PortIndex> first;
        for (std::size_t j = 0; j < controllers_.size(); ++j) {
            if (!isNamedBy(*reference, place.controller, j)) {
                continue;
            }
            const auto& ports = controllers_[j].ports;
            for (std::size_t q = 0; q < ports.size(); ++q) {
                const PortIndex candidate{j, q};
                if ((j == place.controller && q == place.port) || !isMeantBy(*reference, ports[q])) {
                    continue;
                }
                if (const CompanionReference* back = referenceOf(candidate);
                    back && isNamedBy(*back, j, place.controller) &&
                    isMeantBy(*back, controllers_[place.controller].ports[place.port])) {
                    return candidate;
                }
                if (!first) {
                    first = candidate;
                }
            }
        }
        return first;
    }

  private:
    const CompanionReference* referenceOf(PortIndex place) const {
        if (place.controller >= references_.size()) {
            return nullptr;
        }
        const auto& byName = references_[place.controller];
        const auto it = byName.find(controllers_[place.controller].ports[place.port].name);
        return it == byName.end() ? nullptr : &it->second;
    }

    // Whether a reference made on controller `from` points to controller `to`.
    bool isNamedBy(const CompanionReference& reference, std::size_t from, std::size_t to) const {
        return reference.controllerName.empty() ? from == to
                                                : controllers_[to].name == reference.controllerName;
    }

    static bool isMeantBy(const CompanionReference& reference, const USBPortMap& port) {
        if (reference.portNumber > 0) {
            return portNumber(port.portData) == reference.portNumber;
        }
        return port.name == reference.portName;
    }

    const std::vector<USBControllerMap>& controllers_;
    const std::vector<std::map<std::string, CompanionReference>>& references_;
};

} // namespace

std::optional<CompanionReference> companionReference(const NodeProperties& properties) {
    for (const char* key : {"UsbCompanionSS", "UsbCompanionSSP", "UsbCompanionHS"}) {
        const auto value = properties.value(key);
        if (!value) {
            continue;
        }
        const NodeProperties companion(normalizedDictionary(*value));
        const auto number = intProperty("UsbCompanionPortNumber", companion);
        if (!number || *number <= 0) {
            continue;
        }
        return CompanionReference{textOrNameData(companion.value("UsbCompanionControllerName")).value_or(""),
                                  *number, ""};
    }
    if (auto peer = textOrNameData(properties.value(linuxTreeKey::peer)); peer && !peer->empty()) {
        return CompanionReference{"", 0, portNameFrom(*peer)};
    }
    return std::nullopt;
}

void assignCompanionKeys(std::vector<USBControllerMap>& controllers,
                         const std::vector<std::map<std::string, CompanionReference>>& references) {
    // Each port looks through the ports of the controllers it names, so the
    // work grows with the square of the ports: a real machine has a few
    // hundred, and a crafted dump of a hundred thousand must not stall the scan.
    constexpr std::size_t maximumPortsToPair = 4096;
    std::size_t portCount = 0;
    for (const auto& controller : controllers) {
        portCount += controller.ports.size();
    }
    if (portCount > maximumPortsToPair) {
        return;
    }
    const CompanionResolver resolver(controllers, references);
    std::vector<std::pair<PortIndex, PortIndex>> pairs;
    for (std::size_t i = 0; i < controllers.size(); ++i) {
        for (std::size_t p = 0; p < controllers[i].ports.size(); ++p) {
            if (auto companion = resolver.companionOf({i, p})) {
                pairs.emplace_back(PortIndex{i, p}, *companion);
            }
        }
    }
    auto keyOf = [&controllers](PortIndex place) {
        return usbPortStableID(controllers[place.controller],
                               controllers[place.controller].ports[place.port]);
    };
    auto portAt = [&controllers](PortIndex place) -> USBPortMap& {
        return controllers[place.controller].ports[place.port];
    };
    for (const auto& [from, to] : pairs) {
        portAt(from).companionKey = keyOf(to);
    }
    // Macs name the pairing on the USB 2 half only; the SuperSpeed half is
    // just as much the other's companion.
    for (const auto& [from, to] : pairs) {
        if (portAt(to).companionKey.empty()) {
            portAt(to).companionKey = keyOf(from);
        }
    }
}

} // namespace korvane
