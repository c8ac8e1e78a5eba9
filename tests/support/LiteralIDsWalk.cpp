#include "support/LiteralIDsWalk.h"

#include <cstdio>
#include <unicode/locid.h>
#include <unicode/uchar.h>
#include <unicode/ustring.h>

namespace korvane {

namespace {

bool isLineEnd(UChar c) {
    return c == 0x0A || c == 0x0B || c == 0x0C || c == 0x0D || c == 0x85 || c == 0x2028 || c == 0x2029;
}

bool isWhite(UChar32 c) {
    return c == '\t' || u_charType(c) == U_SPACE_SEPARATOR;
}

icu::UnicodeString trim(const icu::UnicodeString& text) {
    int32_t begin = 0;
    int32_t end = text.length();
    while (begin < end && isWhite(text.char32At(begin))) {
        begin = text.moveIndex32(begin, 1);
    }
    while (end > begin && isWhite(text.char32At(text.moveIndex32(end, -1)))) {
        end = text.moveIndex32(end, -1);
    }
    return icu::UnicodeString(text, begin, end - begin);
}

icu::UnicodeString hex(std::int64_t id) {
    char digits[16];
    std::snprintf(digits, sizeof digits, "%04x", static_cast<unsigned>(static_cast<std::uint32_t>(id)));
    return icu::UnicodeString::fromUTF8(digits);
}

std::string utf8(const icu::UnicodeString& text) {
    std::string result;
    text.toUTF8String(result);
    return result;
}

} // namespace

LiteralIDsWalk::LiteralIDsWalk(std::string_view bytes) {
    UErrorCode status = U_ZERO_ERROR;
    characters_.reset(icu::BreakIterator::createCharacterInstance(icu::Locale::getRoot(), status));

    // Strict decoding: one bad byte and there is no text at all.
    int32_t length = 0;
    UErrorCode decodeStatus = U_ZERO_ERROR;
    u_strFromUTF8(nullptr, 0, &length, bytes.data(), static_cast<int32_t>(bytes.size()), &decodeStatus);
    if (decodeStatus != U_BUFFER_OVERFLOW_ERROR && U_FAILURE(decodeStatus)) {
        return;
    }
    const icu::UnicodeString text =
        icu::UnicodeString::fromUTF8(icu::StringPiece(bytes.data(), static_cast<int32_t>(bytes.size())));
    if (text.isEmpty()) {
        return;
    }

    const icu::UnicodeString hash(u"#");
    int32_t begin = 0;
    for (int32_t i = 0; i <= text.length(); ++i) {
        if (i < text.length() && !isLineEnd(text.charAt(i))) {
            continue;
        }
        Line line;
        const icu::UnicodeString raw(text, begin, i - begin);
        line.isComment = startsWithCharacters(raw, hash);
        line.startsWithTab = raw.startsWith(icu::UnicodeString(u"\t"));
        line.trimmed = trim(raw);
        line.lowered = line.trimmed;
        line.lowered.toLower(icu::Locale::getRoot());
        lines_.push_back(std::move(line));
        begin = i + 1;
    }
}

bool LiteralIDsWalk::startsWithCharacters(const icu::UnicodeString& text,
                                          const icu::UnicodeString& prefix) const {
    if (!text.startsWith(prefix)) {
        return false;
    }
    if (text.length() == prefix.length()) {
        return true;
    }
    characters_->setText(text);
    return characters_->isBoundary(prefix.length());
}

bool LiteralIDsWalk::matches(const Line& line, const icu::UnicodeString& hexText,
                             const icu::UnicodeString& hexAndBlank) const {
    return line.lowered == hexText || startsWithCharacters(line.lowered, hexAndBlank);
}

icu::UnicodeString LiteralIDsWalk::dropFirstFourCharacters(const icu::UnicodeString& text) const {
    characters_->setText(text);
    int32_t position = characters_->first();
    for (int i = 0; i < 4 && position != icu::BreakIterator::DONE; ++i) {
        position = characters_->next();
    }
    if (position == icu::BreakIterator::DONE) {
        return {};
    }
    return icu::UnicodeString(text, position);
}

std::string LiteralIDsWalk::name(std::int64_t vendorID, std::int64_t deviceID) const {
    if (lines_.empty()) {
        return {};
    }
    const icu::UnicodeString vendorHex = hex(vendorID);
    const icu::UnicodeString deviceHex = hex(deviceID);
    const icu::UnicodeString vendorHexAndBlank = vendorHex + u" ";
    const icu::UnicodeString deviceHexAndBlank = deviceHex + u" ";
    icu::UnicodeString vendorName;
    bool inVendor = false;
    for (const Line& line : lines_) {
        if (line.isComment || line.trimmed.isEmpty()) {
            continue;
        }
        if (line.startsWithTab) {
            if (!inVendor) {
                continue;
            }
            if (matches(line, deviceHex, deviceHexAndBlank)) {
                const icu::UnicodeString deviceName = trim(dropFirstFourCharacters(line.trimmed));
                if (vendorName.isEmpty()) {
                    return utf8(deviceName);
                }
                if (deviceName.isEmpty()) {
                    return utf8(vendorName);
                }
                return utf8(vendorName + u" " + deviceName);
            }
            continue;
        }
        if (matches(line, vendorHex, vendorHexAndBlank)) {
            vendorName = trim(dropFirstFourCharacters(line.trimmed));
            inVendor = true;
        } else if (inVendor) {
            return utf8(vendorName);
        }
    }
    return utf8(vendorName);
}

} // namespace korvane
