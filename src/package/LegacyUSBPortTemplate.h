#pragma once

#include "records/USBControllerMap.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace korvane {

// Built-in port pictures for controllers whose registry shows no usable port
// tree. A template is a fallback only: a controller with at least one port
// never consults it.

struct LegacyUSBTemplatePort {
    std::string name;
    std::uint32_t port = 0;
    std::int64_t connector = 0;
};

struct LegacyUSBPortTemplate {
    // The value for port-count; it can stand above the highest port number and
    // above the number of ports.
    std::uint32_t count = 0;
    std::vector<LegacyUSBTemplatePort> ports; // ascending by number
};

// The template key of a controller ("8086_a36d", "8086_9xxx", ...), by vendor
// and device only; none when no template covers it.
std::optional<std::string> legacyUSBPortTemplateKey(const USBControllerMap& controller);

// The template of a key matching an entry as a whole; null for any other text.
// The template lives for the whole program.
const LegacyUSBPortTemplate* legacyUSBPortTemplate(std::string_view key);

// The location of every port that came from a template, not from a scan.
inline constexpr std::string_view templatePortLocation = "template";

// The template's ports as records (location "template", four-byte port data),
// in table order; empty when there is no key or no template.
std::vector<USBPortMap> legacyUSBPortTemplatePorts(const USBControllerMap& controller);

} // namespace korvane
