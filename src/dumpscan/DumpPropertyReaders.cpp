#include "dumpscan/DumpPropertyReaders.h"

#include "base/ASCIIText.h"
#include "base/RegularExpression.h"
#include "base/Text.h"
#include "records/PortNumber.h"
#include "scanner/PropertyReaders.h"

#include <array>
#include <map>
#include <memory>
#include <mutex>
#include <unicode/utf8.h>
#include <utility>

namespace korvane {

namespace {

// The readers' option set: case-insensitive, dot matches line ends.
constexpr std::uint32_t readerFlags = UREGEX_CASE_INSENSITIVE | UREGEX_DOTALL;

enum class PatternKind { ioregHex, xmlData, ioregHexInteger, ioregDecimal, xmlHexInteger, xmlDecimal };

std::string patternText(PatternKind kind, std::string_view key) {
    const std::string k = RegularExpression::quoted(key);
    switch (kind) {
    case PatternKind::ioregHex:
        return "\"" + k + "\"\\s*=\\s*<([0-9A-Fa-f ]+)>";
    case PatternKind::xmlData:
        return "<key>\\s*" + k + "\\s*</key>\\s*<data>\\s*([^<\\s]+)\\s*</data>";
    case PatternKind::ioregHexInteger:
        return "\"" + k + "\"\\s*=\\s*(0x[0-9A-Fa-f]+)";
    case PatternKind::ioregDecimal:
        return "\"" + k + "\"\\s*=\\s*([0-9]+)";
    case PatternKind::xmlHexInteger:
        return "<key>\\s*" + k + "\\s*</key>\\s*<integer>\\s*(0x[0-9A-Fa-f]+)\\s*</integer>";
    case PatternKind::xmlDecimal:
        return "<key>\\s*" + k + "\\s*</key>\\s*<integer>\\s*([0-9]+)\\s*</integer>";
    }
    return {};
}

// Compiled patterns by kind and key. The callers ask with a handful of fixed
// keys, so the cache stays tiny; a caller with endless new keys still gets
// correct answers past the cap, only without caching.
std::shared_ptr<const RegularExpression> keyPattern(PatternKind kind, std::string_view key) {
    constexpr std::size_t cap = 256;
    static std::mutex lock;
    static std::map<std::pair<PatternKind, std::string>, std::shared_ptr<const RegularExpression>> cache;
    std::pair<PatternKind, std::string> cacheKey{kind, std::string(key)};
    {
        const std::scoped_lock guard(lock);
        if (const auto it = cache.find(cacheKey); it != cache.end()) {
            return it->second;
        }
    }
    auto pattern = std::make_shared<const RegularExpression>(patternText(kind, key), readerFlags);
    const std::scoped_lock guard(lock);
    if (cache.size() < cap) {
        cache.emplace(std::move(cacheKey), pattern);
    }
    return pattern;
}

std::string withoutBlanks(std::string_view text) {
    std::string result;
    result.reserve(text.size());
    for (const char c : text) {
        if (c != ' ') {
            result.push_back(c);
        }
    }
    return result;
}

// Strict Base64 as the platform decodes it: a length that is a multiple of
// four, padding only at the end, nothing outside the alphabet.
std::optional<ByteBuffer> base64Decoded(std::string_view text) {
    if (text.empty() || text.size() % 4 != 0) {
        return std::nullopt;
    }
    std::size_t padding = 0;
    while (padding < 2 && padding < text.size() && text[text.size() - 1 - padding] == '=') {
        ++padding;
    }
    ByteBuffer bytes;
    bytes.reserve(text.size() / 4 * 3);
    std::uint32_t accumulator = 0;
    int bits = 0;
    for (std::size_t i = 0; i < text.size() - padding; ++i) {
        const char c = text[i];
        int value = -1;
        if (c >= 'A' && c <= 'Z') {
            value = c - 'A';
        } else if (c >= 'a' && c <= 'z') {
            value = c - 'a' + 26;
        } else if (c >= '0' && c <= '9') {
            value = c - '0' + 52;
        } else if (c == '+') {
            value = 62;
        } else if (c == '/') {
            value = 63;
        }
        if (value < 0) {
            return std::nullopt;
        }
        accumulator = (accumulator << 6) | static_cast<std::uint32_t>(value);
        bits += 6;
        if (bits >= 8) {
            bits -= 8;
            bytes.push_back(static_cast<std::uint8_t>(accumulator >> bits));
        }
    }
    return bytes;
}

// The text cut into pieces of two characters (code points), the last maybe one.
std::vector<std::string_view> characterPairs(std::string_view text) {
    std::vector<std::string_view> pieces;
    const auto* s = reinterpret_cast<const std::uint8_t*>(text.data());
    const auto length = static_cast<std::int32_t>(text.size());
    std::int32_t i = 0;
    while (i < length) {
        const std::int32_t start = i;
        for (int n = 0; n < 2 && i < length; ++n) {
            U8_FWD_1(s, i, length);
        }
        pieces.push_back(text.substr(static_cast<std::size_t>(start), static_cast<std::size_t>(i - start)));
    }
    return pieces;
}

// A piece as a byte the way an unsigned 8-bit parse reads it: a sign is
// allowed, and anything outside 0...255 doesn't parse.
std::optional<std::uint8_t> byteValue(std::string_view piece) {
    const auto value = parseSignedInteger(piece, 16);
    if (!value || *value < 0 || *value > 0xFF) {
        return std::nullopt;
    }
    return static_cast<std::uint8_t>(*value);
}

std::int64_t characterLength(std::string_view text) {
    std::int64_t count = 0;
    for (const char c : text) {
        count += (static_cast<unsigned char>(c) & 0xC0) != 0x80 ? 1 : 0;
    }
    return count;
}

// The first `count` characters of the text.
std::string_view characterPrefix(std::string_view text, std::int64_t count) {
    const auto* s = reinterpret_cast<const std::uint8_t*>(text.data());
    const auto length = static_cast<std::int32_t>(text.size());
    std::int32_t i = 0;
    for (std::int64_t n = 0; n < count && i < length; ++n) {
        U8_FWD_1(s, i, length);
    }
    return text.substr(0, static_cast<std::size_t>(i));
}

std::optional<std::int64_t> integerGroup(const RegularExpression& pattern, const icu::UnicodeString& text,
                                         bool isHex) {
    const auto match = pattern.firstMatch(text);
    if (!match || match->size() < 2) {
        return std::nullopt;
    }
    std::string_view digits = (*match)[1];
    if (isHex) {
        digits.remove_prefix(std::min<std::size_t>(2, digits.size()));
    }
    return parseSignedInteger(digits, isHex ? 16 : 10);
}

} // namespace

std::optional<std::string> firstPropertyHex(const std::vector<std::string>& keys,
                                            const icu::UnicodeString& text) {
    for (const auto& key : keys) {
        if (const auto match = keyPattern(PatternKind::ioregHex, key)->firstMatch(text);
            match && match->size() > 1) {
            return withoutBlanks((*match)[1]);
        }
        if (const auto match = keyPattern(PatternKind::xmlData, key)->firstMatch(text);
            match && match->size() > 1) {
            if (const auto bytes = base64Decoded((*match)[1])) {
                return hexString(*bytes);
            }
        }
    }
    return std::nullopt;
}

std::optional<std::string> firstPropertyHex(const std::vector<std::string>& keys, std::string_view text) {
    return firstPropertyHex(keys, unicodeText(text));
}

std::optional<std::int64_t> decodeLittleEndianHex(const std::optional<std::string>& hex) {
    if (!hex) {
        return std::nullopt;
    }
    const std::string digits = asciiLowercased(withoutBlanks(*hex));
    if (characterLength(digits) < 4) {
        return std::nullopt;
    }
    // Pieces that aren't a byte are passed over, not counted as zero.
    ByteBuffer bytes;
    for (const std::string_view piece : characterPairs(characterPrefix(digits, 8))) {
        if (const auto byte = byteValue(piece)) {
            bytes.push_back(*byte);
        }
    }
    return littleEndianValue(bytes);
}

std::optional<ByteBuffer> dataFromIORegHex(const std::optional<std::string>& hex) {
    if (!hex) {
        return std::nullopt;
    }
    const std::string digits = withoutBlanks(*hex);
    if (characterLength(digits) < 8) {
        return std::nullopt;
    }
    ByteBuffer bytes;
    bytes.reserve(digits.size() / 2 + 1);
    for (const std::string_view piece : characterPairs(digits)) {
        if (const auto byte = byteValue(piece)) {
            bytes.push_back(*byte);
        }
    }
    if (bytes.empty()) {
        return std::nullopt;
    }
    return bytes;
}

std::optional<std::int64_t> firstIntegerProperty(const std::vector<std::string>& keys,
                                                 const icu::UnicodeString& text) {
    static constexpr std::array<std::pair<PatternKind, bool>, 4> tries = {{
        {PatternKind::ioregHexInteger, true},
        {PatternKind::ioregDecimal, false},
        {PatternKind::xmlHexInteger, true},
        {PatternKind::xmlDecimal, false},
    }};
    for (const auto& key : keys) {
        for (const auto& [kind, isHex] : tries) {
            if (const auto value = integerGroup(*keyPattern(kind, key), text, isHex)) {
                return value;
            }
        }
    }
    return std::nullopt;
}

std::optional<std::int64_t> firstIntegerProperty(const std::vector<std::string>& keys,
                                                 std::string_view text) {
    return firstIntegerProperty(keys, unicodeText(text));
}

std::string withoutHexPrefixes(std::string_view text) {
    std::string result;
    result.reserve(text.size());
    std::size_t i = 0;
    while (i < text.size()) {
        if (text[i] == '0' && i + 1 < text.size() && (text[i + 1] == 'x' || text[i + 1] == 'X')) {
            i += 2;
            continue;
        }
        result.push_back(text[i]);
        ++i;
    }
    return result;
}

std::optional<ByteBuffer> inferredPortData(std::string_view location, std::int64_t baseLocationByte) {
    const std::string digits = withoutHexPrefixes(location);
    if (characterLength(digits) < 4) {
        return std::nullopt;
    }
    const std::vector<std::string_view> pieces = characterPairs(characterPrefix(digits, 4));
    const std::int64_t firstByte = parseSignedInteger(pieces[0], 16).value_or(baseLocationByte);
    const std::int64_t upperHalf = (parseSignedInteger(pieces[1], 16).value_or(0) >> 4) & 0x0F;
    // Both factors stay far inside 64 bits: the first byte is at most two hex
    // digits and callers pass a byte as the base.
    if (baseLocationByte < -0xFFFF || baseLocationByte > 0xFFFF) {
        return std::nullopt;
    }
    const std::int64_t number = (firstByte - baseLocationByte) * 16 + upperHalf;
    if (number < 1) {
        return std::nullopt;
    }
    return portData(static_cast<std::uint32_t>(number));
}

} // namespace korvane
