#include "base/RegularExpression.h"

#include <limits>

namespace korvane {

RegularExpression::RegularExpression(std::string_view pattern, std::uint32_t flags) {
    UErrorCode status = U_ZERO_ERROR;
    UParseError where{};
    pattern_.reset(icu::RegexPattern::compile(unicodeText(pattern), flags, where, status));
    if (U_FAILURE(status)) {
        pattern_.reset();
    }
}

std::unique_ptr<icu::RegexMatcher> RegularExpression::matcher(const icu::UnicodeString& text) const {
    if (!pattern_) {
        return nullptr;
    }
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<icu::RegexMatcher> result(pattern_->matcher(text, status));
    if (U_FAILURE(status)) {
        return nullptr;
    }
    return result;
}

std::vector<std::string> RegularExpression::groups(icu::RegexMatcher& matcher) {
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

std::optional<std::vector<std::string>> RegularExpression::firstMatch(const icu::UnicodeString& text) const {
    std::unique_ptr<icu::RegexMatcher> found = matcher(text);
    if (!found) {
        return std::nullopt;
    }
    UErrorCode status = U_ZERO_ERROR;
    if (!found->find(status) || U_FAILURE(status)) {
        return std::nullopt;
    }
    return groups(*found);
}

std::optional<std::vector<std::string>> RegularExpression::firstMatch(std::string_view text) const {
    return firstMatch(unicodeText(text));
}

bool RegularExpression::isFoundIn(std::string_view text) const {
    const icu::UnicodeString subject = unicodeText(text);
    std::unique_ptr<icu::RegexMatcher> found = matcher(subject);
    if (!found) {
        return false;
    }
    UErrorCode status = U_ZERO_ERROR;
    const bool isFound = found->find(status);
    return U_SUCCESS(status) && isFound;
}

std::string RegularExpression::quoted(std::string_view literal) {
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
    return icu::UnicodeString::fromUTF8(
        icu::StringPiece(text.data(), static_cast<std::int32_t>(text.size())));
}

} // namespace korvane
