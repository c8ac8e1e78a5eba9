#include "scanner/ControllerDiscovery.h"

#include "base/RegularExpression.h"
#include "base/Text.h"
#include "scanner/PropertyReaders.h"

#include <algorithm>

namespace korvane {

namespace {

// Bounded so a hostile nesting of arrays can't exhaust the stack.
void appendIdentityText(std::string& out, const PropertyValue& value, int depth) {
    constexpr int maximumDepth = 32;
    if (const auto* text = value.text()) {
        out += *text;
    } else if (const auto* array = value.array()) {
        if (depth >= maximumDepth) {
            return;
        }
        for (std::size_t i = 0; i < array->size(); ++i) {
            if (i > 0) {
                out += ' ';
            }
            appendIdentityText(out, (*array)[i], depth + 1);
        }
    } else if (const auto* bytes = value.bytes()) {
        // Zero-separated string lists ("compatible") read as blank-separated words.
        std::string decoded(bytes->begin(), bytes->end());
        std::replace(decoded.begin(), decoded.end(), '\0', ' ');
        if (isValidUTF8(decoded)) {
            out += decoded;
        }
    } else {
        out += plainTextForm(value);
    }
}

} // namespace

bool isAppleXHCIService(const NativeUSBNode& node) {
    if (node.className.find("USBXHCI") != std::string::npos) {
        return true;
    }
    for (const char* key : {"IOClass", "CFBundleIdentifier", "CFBundleIdentifierKernel", "IOProviderClass",
                            "IOPersonalityPublisher"}) {
        const auto value = node.properties.value(key);
        if (!value) {
            continue;
        }
        if (const auto* text = value->text(); text && text->find("USBXHCI") != std::string::npos) {
            return true;
        }
    }
    return false;
}

bool isUSBControllerPCIDevice(const NativeUSBNode& node) {
    if (node.className != "IOPCIDevice") {
        return false;
    }
    const auto classCode = intProperty("class-code", node.properties);
    if (!classCode) {
        return false;
    }
    const auto v = static_cast<std::uint32_t>(*classCode);
    return v == 0x000C0330u || v == 0x0030030Cu || v == 0x0C033000u || v == 0x30030C00u ||
           (v & 0xFFFFFF00u) == 0x0C033000u || (v & 0x00FFFFFFu) == 0x000C0330u;
}

const NativeUSBNode* nearestUSBControllerPCIDevice(const NativeUSBNode& node) {
    for (const NativeUSBNode* current = &node; current != nullptr; current = current->parent) {
        if (isUSBControllerPCIDevice(*current)) {
            return current;
        }
    }
    return nullptr;
}

std::string pciIdentitySearchText(const NativeUSBNode& node) {
    std::string text = node.name + ' ' + node.location + ' ' + node.className;
    for (const char* key : {"IOName", "name", "compatible", "acpi-path", "IOProviderClass", "device_type"}) {
        if (const auto value = node.properties.value(key)) {
            text += ' ';
            appendIdentityText(text, *value, 0);
        }
    }
    return text;
}

std::optional<PCIIdentity> parsePCIIdentity(std::string_view text) {
    static const RegularExpression vendorDevicePCI("pci([0-9a-fA-F]{4})[, ]([0-9a-fA-F]{4})",
                                                   UREGEX_CASE_INSENSITIVE);
    static const RegularExpression vendorDevicePair("([0-9a-fA-F]{4})[:_]([0-9a-fA-F]{4})",
                                                    UREGEX_CASE_INSENSITIVE);
    const icu::UnicodeString subject = unicodeText(text);
    for (const RegularExpression* expression : {&vendorDevicePCI, &vendorDevicePair}) {
        const auto groups = expression->firstMatch(subject);
        if (!groups) {
            continue;
        }
        const auto vendor = parseSignedInteger((*groups)[1], 16);
        const auto device = parseSignedInteger((*groups)[2], 16);
        if (vendor && device && *vendor > 0 && *device > 0) {
            return PCIIdentity{*vendor, *device};
        }
    }
    return std::nullopt;
}

std::optional<PCIIdentity> pciIdentity(const NativeUSBNode& pciNode) {
    const auto vendor = intProperty("vendor-id", pciNode.properties);
    const auto device = intProperty("device-id", pciNode.properties);
    if (vendor && device && *vendor >= 1 && *device >= 1) {
        return PCIIdentity{*vendor, *device};
    }
    auto parsed = parsePCIIdentity(pciIdentitySearchText(pciNode));
    if (parsed && parsed->vendorID >= 1 && parsed->deviceID >= 1) {
        return parsed;
    }
    return std::nullopt;
}

} // namespace korvane
