#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unicode/regex.h>
#include <unicode/unistr.h>
#include <vector>

namespace korvane {

// One ICU regular expression of the dump parsers, compiled once and shared
// read-only across threads; every search makes its own matcher, since a
// matcher is not shareable.
class DumpPattern {
public:
    DumpPattern(std::string_view pattern, std::uint32_t flags);

    // The first match in `text`, as its capture groups in UTF-8 (group 0 first),
    // or none. An unusable pattern matches nothing.
    std::optional<std::vector<std::string>> firstMatch(const icu::UnicodeString& text) const;

    // firstMatch() for a pattern that begins "\+-o\s+(.+?)" on one line: the
    // group takes in any later "+-o", so if the first "+-o" followed by a
    // blank starts no match, none after it does, and searching stops there.
    // This keeps a line stuffed with "+-o " linear instead of quadratic.
    std::optional<std::vector<std::string>> firstNodeLineMatch(const icu::UnicodeString& line) const;

    // ICU's quoting of a literal text inside a pattern.
    static std::string quoted(std::string_view literal);

private:
    std::unique_ptr<icu::RegexMatcher> makeMatcher(const icu::UnicodeString& text) const;
    static std::vector<std::string> groups(icu::RegexMatcher& matcher);

    std::unique_ptr<icu::RegexPattern> pattern_;
};

// The text as ICU wants it; invalid bytes become U+FFFD.
icu::UnicodeString unicodeText(std::string_view text);

} // namespace korvane
