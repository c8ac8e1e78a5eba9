#include "records/Connector.h"

#include "base/Text.h"

namespace korvane {

std::optional<std::string_view> connectorMenuLabel(std::int64_t code) {
    switch (code) {
    case connector::usb2:
        return "USB2";
    case connector::usb3:
        return "USB3";
    case connector::typeCWithSwitch:
        return "Type-C+Sw";
    case connector::typeC:
        return "Type-C";
    case connector::internal:
        return "Internal";
    default:
        return std::nullopt;
    }
}

namespace {

struct SourceText {
    ConnectorSource source;
    std::string_view name;
    std::string_view description;
};

constexpr SourceText sourceTexts[] = {
    {ConnectorSource::firmware, "firmware", "Connector type from the firmware (the port's ACPI _UPC)"},
    {ConnectorSource::registry, "registry", "Connector type stated in the registry (UsbConnector)"},
    {ConnectorSource::kernel, "kernel",
     "Connector type from the kernel (the port's connect_type or its root hub's USB version)"},
    {ConnectorSource::peer, "peer", "USB 3 because the kernel pairs this port with a USB 3 port"},
    {ConnectorSource::inferred, "inferred",
     "Connector type guessed from the port's name and device: check it"},
    {ConnectorSource::user, "user", "Connector type you picked"},
};

} // namespace

std::string_view connectorSourceName(ConnectorSource source) {
    for (const auto& text : sourceTexts) {
        if (text.source == source) {
            return text.name;
        }
    }
    return "inferred";
}

std::optional<ConnectorSource> connectorSourceNamed(std::string_view name) {
    for (const auto& text : sourceTexts) {
        if (text.name == name) {
            return text.source;
        }
    }
    return std::nullopt;
}

std::string_view connectorSourceDescription(ConnectorSource source) {
    for (const auto& text : sourceTexts) {
        if (text.source == source) {
            return text.description;
        }
    }
    return {};
}

std::string connectorCommentLabel(std::int64_t code, std::string_view portName) {
    switch (code) {
    case connector::usb2:
        return "USB2";
    case connector::usb3:
        return uppercased(portName).starts_with("SS") ? "USB3" : "USB2/USB3 companion";
    case connector::typeCWithSwitch:
        return "Type-C + Switch";
    case connector::typeC:
        return "Type-C";
    case connector::internal:
        return "Internal";
    default:
        return "UsbConnector " + std::to_string(code);
    }
}

} // namespace korvane
