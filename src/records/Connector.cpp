#include "records/Connector.h"

#include "records/Text.h"

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
