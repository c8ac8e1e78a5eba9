#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace korvane {

// The registry's UsbConnector values that have names. Records keep whatever
// integer the registry gave; only these five can be chosen in the editor.
namespace connector {
inline constexpr std::int64_t usb2 = 0;
inline constexpr std::int64_t usb3 = 3;
inline constexpr std::int64_t typeCWithSwitch = 9;
inline constexpr std::int64_t typeC = 10;
inline constexpr std::int64_t internal = 255;
} // namespace connector

// The connector menu's entries, in menu order.
inline constexpr std::array<std::int64_t, 5> connectorMenuCodes = {
    connector::usb2, connector::usb3, connector::typeCWithSwitch, connector::typeC, connector::internal};

// The menu label of a named code; none for any other value.
std::optional<std::string_view> connectorMenuLabel(std::int64_t code);

// The label a port comment uses. Code 3 reads "USB3" only on a port whose
// upper-cased name begins with "SS": on an HSxx port it marks the USB 2 half of
// a USB 3 connector.
std::string connectorCommentLabel(std::int64_t code, std::string_view portName);

} // namespace korvane
