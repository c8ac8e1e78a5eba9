#include "savedregistry/GuardedPropertyList.h"

#include "savedregistry/BinaryPlistGuard.h"
#include "savedregistry/RegistryText.h"
#include "savedregistry/SavedRegistryLimits.h"

#include <cstdint>

namespace korvane {

namespace {

// libplist's XML reader recurses once per level; counts the deepest nesting
// of <array> and <dict> without parsing.
bool isXMLNestingWithinLimit(std::string_view bytes, int maximumDepth) {
    int depth = 0;
    std::size_t position = 0;
    while ((position = bytes.find('<', position)) != std::string_view::npos) {
        const std::string_view tag = bytes.substr(position + 1, 7);
        if (tag.starts_with("array") || tag.starts_with("dict")) {
            const std::size_t close = bytes.find('>', position);
            const bool isSelfClosing =
                close != std::string_view::npos && close > 0 && bytes[close - 1] == '/';
            if (!isSelfClosing && ++depth > maximumDepth) {
                return false;
            }
        } else if (tag.starts_with("/array") || tag.starts_with("/dict")) {
            --depth;
        }
        ++position;
    }
    return true;
}

} // namespace

PlistPtr parseGuardedPropertyList(std::string_view bytes, int maximumDepth) {
    if (bytes.empty() || bytes.size() > maximumSavedRegistryBytes) {
        return nullptr;
    }
    if (bytes.starts_with("bplist00")) {
        // A real list has about one object per reference byte; anything far
        // beyond that is built to blow up.
        if (!binaryPlistFitsBudget(bytes, 4 * std::uint64_t{bytes.size()} + 4096, maximumDepth)) {
            return nullptr;
        }
    } else if (!isXMLNestingWithinLimit(bytes, maximumDepth)) {
        return nullptr;
    }
    return parsePropertyList(bytes);
}

std::optional<std::string> plistText(plist_t node) {
    if (plist_get_node_type(node) != PLIST_STRING) {
        return std::nullopt;
    }
    // Not plist_get_string_val: libplist asserts there when the text holds a
    // NUL, which its XML reader lets through.
    std::uint64_t length = 0;
    const char* text = plist_get_string_ptr(node, &length);
    if (!text) {
        return std::nullopt;
    }
    const std::string_view bytes(text, length);
    if (!isRegistryText(bytes)) {
        return std::nullopt;
    }
    return std::string(bytes);
}

} // namespace korvane
