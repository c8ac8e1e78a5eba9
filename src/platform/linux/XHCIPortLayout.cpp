#include "platform/linux/XHCIPortLayout.h"

#include "platform/linux/SysfsReading.h"

#include <algorithm>
#include <set>
#include <sstream>

namespace korvane {

namespace {

// The xHCI specification allows 255 ports; an offset or count beyond that is
// a damaged dump.
constexpr std::uint32_t maxControllerPorts = 255;
constexpr std::size_t maxCapabilities = 64;

std::optional<std::uint32_t> registerValue(const std::string& text, std::string_view name) {
    std::istringstream lines(text);
    std::string line;
    while (std::getline(lines, line)) {
        const auto equals = line.find('=');
        if (equals == std::string::npos) {
            continue;
        }
        std::string key = line.substr(0, equals);
        key.erase(key.find_last_not_of(" \t") + 1);
        key.erase(0, key.find_first_not_of(" \t"));
        if (key != name) {
            continue;
        }
        std::string value = line.substr(equals + 1);
        value.erase(0, value.find_first_not_of(" \t"));
        value.erase(value.find_last_not_of(" \t\r") + 1);
        return sysfs::parseHex(value);
    }
    return std::nullopt;
}

} // namespace

std::optional<XHCIPortLayout> XHCIPortLayout::fromCapabilityTexts(const std::vector<std::string>& texts) {
    std::set<std::uint32_t> usb2;
    std::set<std::uint32_t> usb3;
    for (const auto& text : texts) {
        const auto revision = registerValue(text, "EXTCAP_REVISION");
        const auto portInfo = registerValue(text, "EXTCAP_PORTINFO");
        if (!revision || !portInfo) {
            continue;
        }
        const std::uint32_t major = (*revision >> 24) & 0xff;
        const std::uint32_t offset = *portInfo & 0xff;
        const std::uint32_t count = (*portInfo >> 8) & 0xff;
        if (offset == 0 || offset + count - 1 > maxControllerPorts) {
            continue;
        }
        auto& ports = major >= 3 ? usb3 : usb2;
        for (std::uint32_t port = offset; port < offset + count; ++port) {
            // A port claimed twice stays with its first protocol, as the driver keeps it.
            if (!usb2.contains(port) && !usb3.contains(port)) {
                ports.insert(port);
            }
        }
    }
    if (usb2.empty() && usb3.empty()) {
        return std::nullopt;
    }
    return XHCIPortLayout{{usb2.begin(), usb2.end()}, {usb3.begin(), usb3.end()}};
}

std::optional<XHCIPortLayout> XHCIPortLayout::read(const std::filesystem::path& controllerDebugDirectory) {
    std::vector<std::string> texts;
    std::error_code error;
    std::filesystem::directory_iterator it(controllerDebugDirectory, error);
    std::vector<std::filesystem::path> files;
    for (; !error && it != std::filesystem::directory_iterator() && files.size() < sysfs::maxDirectoryEntries;
         it.increment(error)) {
        if (it->path().filename().string().starts_with("reg-ext-protocol:")) {
            files.push_back(it->path());
        }
    }
    std::sort(files.begin(), files.end());
    for (const auto& file : files) {
        if (texts.size() == maxCapabilities) {
            break;
        }
        if (auto text = sysfs::readAttribute(file)) {
            texts.push_back(std::move(*text));
        }
    }
    return fromCapabilityTexts(texts);
}

} // namespace korvane
