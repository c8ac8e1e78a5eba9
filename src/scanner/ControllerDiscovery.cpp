#include "scanner/ControllerDiscovery.h"

#include "records/Text.h"
#include "scanner/PropertyReaders.h"

#include <algorithm>
#include <array>
#include <limits>
#include <memory>
#include <unicode/regex.h>
#include <unicode/unistr.h>

namespace korvane {

namespace {

// Compiled once: RegexPattern is immutable and safe to share across threads;
// each use makes its own matcher.
std::unique_ptr<const icu::RegexPattern> compileCaseInsensitive(const char* pattern) {
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<const icu::RegexPattern> compiled(
        icu::RegexPattern::compile(icu::UnicodeString::fromUTF8(pattern), UREGEX_CASE_INSENSITIVE, status));
    return U_SUCCESS(status) ? std::move(compiled) : nullptr;
}

const std::array<const icu::RegexPattern*, 2>& pciIdentityPatterns() {
    static const std::unique_ptr<const icu::RegexPattern> vendorDevicePCI =
        compileCaseInsensitive("pci([0-9a-fA-F]{4})[, ]([0-9a-fA-F]{4})");
    static const std::unique_ptr<const icu::RegexPattern> vendorDevicePair =
        compileCaseInsensitive("([0-9a-fA-F]{4})[:_]([0-9a-fA-F]{4})");
    static const std::array<const icu::RegexPattern*, 2> patterns{vendorDevicePCI.get(),
                                                                  vendorDevicePair.get()};
    return patterns;
}

std::optional<std::int64_t> hexGroup(icu::RegexMatcher& matcher, int group) {
    UErrorCode status = U_ZERO_ERROR;
    const icu::UnicodeString captured = matcher.group(group, status);
    if (U_FAILURE(status)) {
        return std::nullopt;
    }
    std::string text;
    captured.toUTF8String(text);
    return parseSignedInteger(text, 16);
}

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
        const auto it = node.properties.find(key);
        if (it == node.properties.end()) {
            continue;
        }
        if (const auto* text = it->second.text(); text && text->find("USBXHCI") != std::string::npos) {
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

std::string stringValueForPCIIdentity(const PropertyValue& value) {
    std::string out;
    appendIdentityText(out, value, 0);
    return out;
}

std::string pciIdentitySearchText(const NativeUSBNode& node) {
    std::string text = node.name + ' ' + node.location + ' ' + node.className;
    for (const char* key : {"IOName", "name", "compatible", "acpi-path", "IOProviderClass", "device_type"}) {
        if (const auto it = node.properties.find(key); it != node.properties.end()) {
            text += ' ';
            appendIdentityText(text, it->second, 0);
        }
    }
    return text;
}

std::optional<PCIIdentity> parsePCIIdentity(std::string_view text) {
    if (text.size() > static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max())) {
        return std::nullopt;
    }
    const icu::UnicodeString subject =
        icu::UnicodeString::fromUTF8(icu::StringPiece(text.data(), static_cast<std::int32_t>(text.size())));
    for (const icu::RegexPattern* pattern : pciIdentityPatterns()) {
        if (pattern == nullptr) {
            continue;
        }
        UErrorCode status = U_ZERO_ERROR;
        std::unique_ptr<icu::RegexMatcher> matcher(pattern->matcher(subject, status));
        if (U_FAILURE(status) || !matcher || !matcher->find(status) || U_FAILURE(status)) {
            continue;
        }
        const auto vendor = hexGroup(*matcher, 1);
        const auto device = hexGroup(*matcher, 2);
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
