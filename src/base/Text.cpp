#include "base/Text.h"

#include <cstdint>
#include <unicode/locid.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>
#include <unicode/utf8.h>

namespace korvane {

bool isValidUTF8(std::string_view bytes) {
    const auto* s = reinterpret_cast<const std::uint8_t*>(bytes.data());
    const auto length = static_cast<std::int32_t>(bytes.size());
    if (bytes.size() > static_cast<std::size_t>(INT32_MAX)) {
        return false;
    }
    std::int32_t i = 0;
    while (i < length) {
        UChar32 c;
        U8_NEXT(s, i, length, c);
        if (c < 0) {
            return false;
        }
    }
    return true;
}

std::string strictUTF8(std::string_view bytes) {
    return isValidUTF8(bytes) ? std::string(bytes) : std::string();
}

std::string trimmed(std::string_view text) {
    // Walk code points from each end; invalid bytes count as content.
    const auto* s = reinterpret_cast<const std::uint8_t*>(text.data());
    const auto length = static_cast<std::int32_t>(text.size());
    std::int32_t start = 0;
    while (start < length) {
        std::int32_t next = start;
        UChar32 c;
        U8_NEXT(s, next, length, c);
        if (c < 0 || !u_isUWhiteSpace(c)) {
            break;
        }
        start = next;
    }
    std::int32_t end = length;
    while (end > start) {
        std::int32_t previous = end;
        UChar32 c;
        U8_PREV(s, start, previous, c);
        if (c < 0 || !u_isUWhiteSpace(c)) {
            break;
        }
        end = previous;
    }
    return std::string(text.substr(static_cast<std::size_t>(start), static_cast<std::size_t>(end - start)));
}

std::string joined(const std::vector<std::string>& pieces, std::string_view separator) {
    std::string text;
    for (std::size_t i = 0; i < pieces.size(); ++i) {
        if (i > 0) {
            text += separator;
        }
        text += pieces[i];
    }
    return text;
}

std::string uppercased(std::string_view text) {
    std::string result;
    icu::UnicodeString::fromUTF8(icu::StringPiece(text.data(), static_cast<std::int32_t>(text.size())))
        .toUpper(icu::Locale::getRoot())
        .toUTF8String(result);
    return result;
}

} // namespace korvane
