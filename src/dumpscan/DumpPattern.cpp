#include "dumpscan/DumpPattern.h"

#include <limits>

namespace korvane {

DumpPattern::DumpPattern(std::string_view pattern, std::uint32_t flags) {
    UErrorCode status = U_ZERO_ERROR;
    UParseError where{};
    pattern_.reset(icu::RegexPattern::compile(unicodeText(pattern), flags, where, status));
    if (U_FAILURE(status)) {
        pattern_.reset();
    }
}

std::unique_ptr<icu::RegexMatcher> DumpPattern::makeMatcher(const icu::UnicodeString& text) const {
    if (!pattern_) {
        return nullptr;
    }
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<icu::RegexMatcher> matcher(pattern_->matcher(text, status));
    if (U_FAILURE(status)) {
        return nullptr;
    }
    return matcher;
}

std::vector<std::string> DumpPattern::groups(icu::RegexMatcher& matcher) {
    std::vector<std::string> result;
    const std::int32_t count = matcher.groupCount();
    result.reserve(static_cast<std::size_t>(count) + 1);
    for (std::int32_t group = 0; group <= count; ++group) {
        UErrorCode status = U_ZERO_ERROR;
        std::string utf8;
        const icu::UnicodeString text = matcher.group(group, status);
        if (U_SUCCESS(status)) {
            text.toUTF8String(utf8);
        }
        result.push_back(std::move(utf8));
    }
    return result;
}

std::optional<std::vector<std::string>> DumpPattern::firstMatch(const icu::UnicodeString& text) const {
    std::unique_ptr<icu::RegexMatcher> matcher = makeMatcher(text);
    if (!matcher) {
        return std::nullopt;
    }
    UErrorCode status = U_ZERO_ERROR;
    if (!matcher->find(status) || U_FAILURE(status)) {
        return std::nullopt;
    }
    return groups(*matcher);
}

std::optional<std::vector<std::string>> DumpPattern::firstNodeLineMatch(const icu::UnicodeString& line) const {
    static const DumpPattern blankBehindMarker(R"(\+-o\s)", 0);
    std::unique_ptr<icu::RegexMatcher> matcher = makeMatcher(line);
    std::unique_ptr<icu::RegexMatcher> startMatcher = blankBehindMarker.makeMatcher(line);
    if (!matcher || !startMatcher) {
        return std::nullopt;
    }
    static const icu::UnicodeString marker(u"+-");
    for (std::int32_t at = line.indexOf(marker); at >= 0; at = line.indexOf(marker, at + 1)) {
        if (at + 2 >= line.length() || (line.charAt(at + 2) != u'o' && line.charAt(at + 2) != u'O')) {
            continue;
        }
        UErrorCode status = U_ZERO_ERROR;
        matcher->region(at, line.length(), status);
        if (U_SUCCESS(status) && matcher->lookingAt(status) && U_SUCCESS(status)) {
            return groups(*matcher);
        }
        status = U_ZERO_ERROR;
        startMatcher->region(at, line.length(), status);
        if (U_SUCCESS(status) && startMatcher->lookingAt(status) && U_SUCCESS(status)) {
            return std::nullopt;
        }
    }
    return std::nullopt;
}

std::string DumpPattern::quoted(std::string_view literal) {
    // \Q...\E, with every "\E" inside the literal closed, written escaped, and reopened.
    std::string result = "\\Q";
    std::size_t start = 0;
    while (true) {
        const std::size_t at = literal.find("\\E", start);
        if (at == std::string_view::npos) {
            result.append(literal.substr(start));
            break;
        }
        result.append(literal.substr(start, at - start));
        result.append("\\E\\\\E\\Q");
        start = at + 2;
    }
    result.append("\\E");
    return result;
}

icu::UnicodeString unicodeText(std::string_view text) {
    if (text.size() > static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max())) {
        return {};
    }
    return icu::UnicodeString::fromUTF8(icu::StringPiece(text.data(), static_cast<std::int32_t>(text.size())));
}

} // namespace korvane
