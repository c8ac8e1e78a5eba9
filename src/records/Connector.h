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

// Whether `code` fits UsbConnector, which the registry keeps in one byte:
// a map file or a package from elsewhere may hold any number there.
constexpr bool isConnectorCode(std::int64_t code) {
    return code >= 0 && code <= 255;
}

// The connector menu's entries, in menu order.
inline constexpr std::array<std::int64_t, 5> connectorMenuCodes = {
    connector::usb2, connector::usb3, connector::typeCWithSwitch, connector::typeC, connector::internal};

// The menu label of a named code; none for any other value.
std::optional<std::string_view> connectorMenuLabel(std::int64_t code);

// Where a port's connector code came from. A front shows it beside the code,
// so that a guess is never taken for what the machine stated.
enum class ConnectorSource {
    firmware, // the port's ACPI _UPC, evaluated from the machine's tables
    registry, // a UsbConnector (or like) property the registry or dump stated
    kernel,   // Linux: the port's connect_type or its root hub's USB version
    peer,     // Linux: the USB 2 half of a port that has a USB 3 peer
    inferred, // worked out from the name and what is attached
    user,     // the user's own pick, differing from the scanned code
};

// "firmware", "registry", "kernel", "peer", "inferred", "user": the word the
// registry property connector-source, the command line and scripts use.
std::string_view connectorSourceName(ConnectorSource source);
// The source a word names; none for any other text.
std::optional<ConnectorSource> connectorSourceNamed(std::string_view name);
// One sentence for a person: where the code came from and how far to trust it.
std::string_view connectorSourceDescription(ConnectorSource source);

// The label a port comment uses. Code 3 reads "USB3" only on a port whose
// upper-cased name begins with "SS": on an HSxx port it marks the USB 2 half of
// a USB 3 connector.
std::string connectorCommentLabel(std::int64_t code, std::string_view portName);

} // namespace korvane
