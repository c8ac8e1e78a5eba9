#include "package/SensitiveTextRedaction.h"

#include "base/ASCIIText.h"
#include "base/RegularExpression.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <memory>
#include <vector>

namespace korvane {

namespace {

struct RedactionRule {
    std::string_view pattern;
    std::string_view replacement;
};

// Every rule also runs case-insensitive, with the dot crossing line ends and
// ^ and $ anchoring at lines (see ruleFlags), on top of its own inline flags.
// The dot-all flag is why rule 7 masks everything from its key to the end of
// the text, not just the rest of the line.
constexpr std::array<RedactionRule, 10> redactionTable = {{
    {R"re((?is)(<key>\s*(?:SerialNumber|Serial Number|serial_number|serial-number|BoardSerialNumber|board_serial_number|board-serial-number|SmUUID|CustomUUID|MLB|mlb|ROM|rom|SystemSerialNumber|system_serial_number|SystemUUID|system_uuid|Hardware UUID|hardware_uuid|HardwareAddress|IOPlatformUUID|IOPlatformSerialNumber|IOPlatformSystemSerialNumber|serial_number|system-id|platform-uuid|platform_UUID|provisioning_UDID|Provisioning UDID|IOPlatformSystemSerialNumber)\s*</key>\s*<(?:string|data)>).*?(</(?:string|data)>))re",
     "$1XX-MASKED-XX$2"},
    {R"re((?is)(<key>\s*(?:_items|_properties)\s*</key>\s*<array>.*?<dict>.*?<key>\s*_name\s*</key>\s*<string>\s*(?:Serial Number \(system\)|Hardware UUID|Provisioning UDID)\s*</string>.*?<key>\s*_value\s*</key>\s*<string>).*?(</string>))re",
     "$1XX-MASKED-XX$2"},
    {R"re((?im)^([ \t]*(?:Serial Number(?: \(system\))?|SerialNumber|serial_number|Hardware UUID|hardware_uuid|Provisioning UDID|provisioning_UDID|System UUID|SystemSerialNumber|SystemUUID|BoardSerialNumber|SmUUID|MLB|ROM|IOPlatformSerialNumber|IOPlatformUUID|IOPlatformSystemSerialNumber|platform_UUID)[ \t:=]+)[^\n]*$)re",
     "$1XX-MASKED-XX"},
    {R"re((?i)\b[A-F0-9]{8}-[A-F0-9]{4}-[A-F0-9]{4}-[A-F0-9]{4}-[A-F0-9]{12}\b)re", "XX-MASKED-UUID"},
    {R"re((?i)\b[0-9A-F]{2}(:[0-9A-F]{2}){5}\b)re", "XX:XX:XX:XX:XX:XX"},
    {R"re((?i)\b[0-9A-F]{2}(-[0-9A-F]{2}){5}\b)re", "XX:XX:XX:XX:XX:XX"},
    {R"re((?im)^([ \t]*(?:IOPlatformSerialNumber|serial-number|board-serial-number|serial_number|mlb|ROM|platform_UUID)[^\n:=]*[ \t:=]+).*$)re",
     "$1XX-MASKED-XX"},
    {R"re((?i)(Serial Number \(system\):\s*)[A-Z0-9]+)re", "$1XX-MASKED-XX"},
    {R"re((?i)(Hardware UUID:\s*)[A-F0-9-]+)re", "$1XX-MASKED-UUID"},
    {R"re((?i)(Provisioning UDID:\s*)[A-F0-9-]+)re", "$1XX-MASKED-UUID"},
}};

constexpr std::uint32_t ruleFlags = UREGEX_CASE_INSENSITIVE | UREGEX_DOTALL | UREGEX_MULTILINE;

// The lazy ".*?" spans of rules 1 and 2 backtrack over the whole text when a
// document has many openers and no value: cubic time. The limit bounds each
// search (the engine counts in steps of 10,000 moves, about half a
// millisecond here), far above what a real document of ours needs. A rule
// that runs out keeps what it masked so far and leaves the rest as it was.
constexpr std::int32_t matchTimeLimit = 5000;
constexpr std::int32_t matchStackLimit = 64 * 1024 * 1024;

struct CompiledRule {
    RegularExpression expression;
    icu::UnicodeString replacement;
};

const std::vector<CompiledRule>& compiledRules() {
    static const auto rules = [] {
        std::vector<CompiledRule> compiled;
        compiled.reserve(redactionTable.size());
        for (const auto& rule : redactionTable) {
            compiled.push_back({RegularExpression(rule.pattern, ruleFlags), unicodeText(rule.replacement)});
        }
        return compiled;
    }();
    return rules;
}

// False only where no rule of the table can match, so that the many short
// texts of a registry tree skip the regular expressions. Each rule needs one
// of these: "<key>" (1, 2); a serial, UUID or UDID word (3, 7 to 10); MLB or
// ROM at a line's start (3, 7); the hyphens of a UUID or the separators of a
// MAC address (4 to 6). Beyond ASCII, case folding can match other letters
// ("ſ" for "s"), so such a text always takes the full way.
bool mayHoldSensitiveText(std::string_view text) {
    if (!isASCII(text) || std::count(text.begin(), text.end(), '-') >= 4 ||
        std::count(text.begin(), text.end(), ':') >= 5) {
        return true;
    }
    for (std::string_view word : {"serial", "uuid", "udid", "<key>"}) {
        if (containsIgnoringASCIICase(text, word)) {
            return true;
        }
    }
    for (std::size_t start = 0; start < text.size();) {
        std::size_t at = start;
        while (at < text.size() && (text[at] == ' ' || text[at] == '\t')) {
            ++at;
        }
        const std::string head = asciiLowercased(text.substr(at, 3));
        if (head == "mlb" || head == "rom") {
            return true;
        }
        const std::size_t end = text.find_first_of("\n\r", at);
        start = end == std::string_view::npos ? text.size() : end + 1;
    }
    return false;
}

} // namespace

std::string redactSensitiveText(std::string_view text) {
    if (!mayHoldSensitiveText(text)) {
        return std::string(text);
    }
    if (text.size() > static_cast<std::size_t>(INT32_MAX / 2)) {
        // Beyond what one UTF-16 string can hold; nothing we write is this big.
        return std::string(text);
    }
    icu::UnicodeString current = unicodeText(text);
    for (const auto& rule : compiledRules()) {
        std::unique_ptr<icu::RegexMatcher> matcher = rule.expression.matcher(current);
        if (!matcher) {
            continue;
        }
        UErrorCode status = U_ZERO_ERROR;
        matcher->setTimeLimit(matchTimeLimit, status);
        matcher->setStackLimit(matchStackLimit, status);
        icu::UnicodeString replaced = matcher->replaceAll(rule.replacement, status);
        matcher.reset();
        if (U_SUCCESS(status)) {
            current = std::move(replaced);
        }
    }
    std::string result;
    current.toUTF8String(result);
    return result;
}

std::string maskHomeFolder(std::string_view text, const std::filesystem::path& home) {
    std::string folder = home.lexically_normal().string();
    while (folder.size() > 1 && folder.back() == '/') {
        folder.pop_back();
    }
    if (folder.size() <= 1) {
        return std::string(text);
    }
    // A name goes on past the folder's end with any of these; anything else
    // (a slash, a blank, a quote, a colon, the end) ends the path there.
    const auto continuesName = [](char c) {
        const bool isAlphanumeric =
            (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
        return isAlphanumeric || c == '-' || c == '_' || c == '.' || c == '~' ||
               static_cast<unsigned char>(c) >= 0x80;
    };
    std::string masked;
    std::size_t from = 0;
    for (auto at = text.find(folder); at != std::string_view::npos; at = text.find(folder, at + 1)) {
        const std::size_t end = at + folder.size();
        if (at < from || (end < text.size() && continuesName(text[end]))) {
            continue;
        }
        masked.append(text.substr(from, at - from)).append("~");
        from = end;
    }
    masked.append(text.substr(from));
    return masked;
}

} // namespace korvane
