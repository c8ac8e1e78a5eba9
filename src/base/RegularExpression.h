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

// An ICU regular expression (the syntax and flags of UREGEX_*), compiled once
// and shared read-only across threads: a compiled pattern is immutable and
// thread-safe in ICU, a matcher is not, so every search makes its own.
// An expression that doesn't compile matches nothing.
class RegularExpression {
  public:
    explicit RegularExpression(std::string_view pattern, std::uint32_t flags = 0);

    bool isUsable() const { return pattern_ != nullptr; }

    // A matcher of its own over `text`, which must outlive it; null when the
    // expression is unusable.
    std::unique_ptr<icu::RegexMatcher> matcher(const icu::UnicodeString& text) const;

    // The first match's capture groups in UTF-8 (group 0 first), or none.
    std::optional<std::vector<std::string>> firstMatch(const icu::UnicodeString& text) const;
    std::optional<std::vector<std::string>> firstMatch(std::string_view text) const;

    // Whether the expression matches somewhere in the text.
    bool isFoundIn(std::string_view text) const;

    // The capture groups of the matcher's current match, in UTF-8.
    static std::vector<std::string> groups(icu::RegexMatcher& matcher);

    // A literal text quoted for use inside a pattern.
    static std::string quoted(std::string_view literal);

  private:
    std::unique_ptr<icu::RegexPattern> pattern_;
};

// The text as ICU wants it; invalid bytes become U+FFFD, and a text too long
// for ICU's 32-bit lengths becomes the empty text.
icu::UnicodeString unicodeText(std::string_view text);

} // namespace korvane
