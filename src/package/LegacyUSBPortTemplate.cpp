#include "package/LegacyUSBPortTemplate.h"

#include "records/Connector.h"

#include <array>
#include <cstdio>
#include <map>

namespace korvane {

namespace {

// One run of names: prefix01, prefix02, ... numbered up from firstPort.
struct PortRun {
    std::string_view prefix;
    std::uint32_t firstPort;
    std::uint32_t lastPort;
};

struct TemplateShape {
    std::uint32_t count;
    PortRun first;
    PortRun second;
};

struct TemplateRow {
    std::string_view key;
    TemplateShape shape;
};

// Most PCH controllers from Skylake on share this picture. The gaps (no port
// 15 and 16 here, none of 11 and 12 on 02ed, ...) are deliberate: they are
// the numbers these controllers leave unused.
constexpr TemplateShape shape06ed = {26, {"HS", 1, 14}, {"SS", 17, 26}};

constexpr std::array<TemplateRow, 22> templateTable = {{
    {"1b21_3241", {8, {"HSS", 1, 2}, {"SSS", 3, 4}}},
    {"8086_02ed", {16, {"HS", 1, 10}, {"SS", 13, 16}}},
    {"8086_06ed", shape06ed},
    {"8086_1e31", {8, {"HS", 1, 4}, {"SS", 5, 8}}},
    {"8086_34ed", {18, {"HS", 1, 12}, {"SS", 13, 16}}},
    {"8086_43ed", shape06ed},
    {"8086_51ed", shape06ed},
    {"8086_7a60", shape06ed},
    {"8086_7ae0", shape06ed},
    {"8086_7exx", shape06ed},
    {"8086_7f6e", shape06ed},
    {"8086_8xxx", {21, {"HS", 1, 14}, {"SS", 16, 21}}},
    {"8086_9cb1", {15, {"HS", 1, 11}, {"SS", 12, 15}}},
    {"8086_9dxx", {18, {"HS", 1, 10}, {"SS", 13, 18}}},
    {"8086_9xxx", {13, {"HS", 1, 9}, {"SS", 10, 13}}},
    {"8086_a0ed", shape06ed},
    {"8086_a12f", shape06ed},
    {"8086_a1af", shape06ed},
    {"8086_a2af", shape06ed},
    {"8086_a36d", shape06ed},
    {"8086_a3af", shape06ed},
    {"8086_a87d", shape06ed},
}};

// Intel devices that have a template of their own, ahead of the wildcards.
constexpr std::array<std::int64_t, 17> intelExactDevices = {0x02ed, 0x06ed, 0x1e31, 0x34ed, 0x43ed, 0x51ed,
                                                            0x7a60, 0x7ae0, 0x7f6e, 0x9cb1, 0xa0ed, 0xa12f,
                                                            0xa1af, 0xa2af, 0xa36d, 0xa3af, 0xa87d};

constexpr std::int64_t vendorIntel = 0x8086;
constexpr std::int64_t vendorASMedia = 0x1b21;

void appendRun(const PortRun& run, std::vector<LegacyUSBTemplatePort>& ports) {
    for (std::uint32_t port = run.firstPort; port <= run.lastPort; ++port) {
        char suffix[16];
        std::snprintf(suffix, sizeof suffix, "%02u", port - run.firstPort + 1);
        ports.push_back({std::string(run.prefix) + suffix, port, connector::usb3});
    }
}

const std::map<std::string, LegacyUSBPortTemplate, std::less<>>& templates() {
    static const auto table = [] {
        std::map<std::string, LegacyUSBPortTemplate, std::less<>> built;
        for (const auto& row : templateTable) {
            LegacyUSBPortTemplate entry{row.shape.count, {}};
            appendRun(row.shape.first, entry.ports);
            appendRun(row.shape.second, entry.ports);
            built.emplace(std::string(row.key), std::move(entry));
        }
        return built;
    }();
    return table;
}

std::string intelKey(std::string_view suffix) {
    return "8086_" + std::string(suffix);
}

} // namespace

std::optional<std::string> legacyUSBPortTemplateKey(const USBControllerMap& controller) {
    const std::int64_t vendor = controller.vendorID;
    const std::int64_t device = controller.deviceID;
    if (vendor == vendorASMedia) {
        return device == 0x3241 ? std::optional<std::string>("1b21_3241") : std::nullopt;
    }
    if (vendor != vendorIntel) {
        return std::nullopt;
    }
    for (const std::int64_t exact : intelExactDevices) {
        if (device == exact) {
            char digits[8];
            std::snprintf(digits, sizeof digits, "%04x", static_cast<unsigned>(exact));
            return intelKey(digits);
        }
    }
    // Rule order matters: 9dxx must win over 9xxx.
    if ((device & 0xff00) == 0x7e00) {
        return intelKey("7exx");
    }
    if ((device & 0xf000) == 0x8000) {
        return intelKey("8xxx");
    }
    if ((device & 0xff00) == 0x9d00) {
        return intelKey("9dxx");
    }
    if ((device & 0xf000) == 0x9000) {
        return intelKey("9xxx");
    }
    return std::nullopt;
}

const LegacyUSBPortTemplate* legacyUSBPortTemplate(std::string_view key) {
    const auto& table = templates();
    const auto found = table.find(key);
    return found == table.end() ? nullptr : &found->second;
}

std::vector<USBPortMap> legacyUSBPortTemplatePorts(const USBControllerMap& controller) {
    const auto key = legacyUSBPortTemplateKey(controller);
    const LegacyUSBPortTemplate* entry = key ? legacyUSBPortTemplate(*key) : nullptr;
    if (!entry) {
        return {};
    }
    std::vector<USBPortMap> ports;
    ports.reserve(entry->ports.size());
    for (const auto& port : entry->ports) {
        ports.push_back(
            {port.name, std::string(templatePortLocation), port.connector, portData(port.port), "", ""});
    }
    return ports;
}

} // namespace korvane
