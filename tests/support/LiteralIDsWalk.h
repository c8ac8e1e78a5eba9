#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <unicode/brkiter.h>
#include <unicode/unistr.h>
#include <vector>

namespace korvane {

// The ids line walk done the plain way: every lookup walks from the first
// line, step by step, with ICU's general operations (full lower-casing,
// grapheme boundaries, the Zs class). The reference the indexed search must
// agree with. Lines are split, trimmed and lower-cased once up front, which
// only saves repeating pure work; the walk itself is untouched. Not thread-safe.
class LiteralIDsWalk {
  public:
    explicit LiteralIDsWalk(std::string_view bytes);

    std::string name(std::int64_t vendorID, std::int64_t deviceID) const;

  private:
    struct Line {
        bool isComment = false;
        bool startsWithTab = false;
        icu::UnicodeString trimmed;
        icu::UnicodeString lowered;
    };

    bool matches(const Line& line, const icu::UnicodeString& hex,
                 const icu::UnicodeString& hexAndBlank) const;
    icu::UnicodeString dropFirstFourCharacters(const icu::UnicodeString& text) const;
    bool startsWithCharacters(const icu::UnicodeString& text, const icu::UnicodeString& prefix) const;

    std::vector<Line> lines_;
    std::unique_ptr<icu::BreakIterator> characters_;
};

} // namespace korvane
