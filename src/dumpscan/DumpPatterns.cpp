#include "dumpscan/DumpPatterns.h"

#include "base/ASCIIText.h"
#include "base/Text.h"
#include "dumpscan/DumpText.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <unicode/uchar.h>
#include <unicode/utf8.h>

namespace korvane {

const RegularExpression& xhciNodeExpression() {
    static const RegularExpression expression(
        R"(\+-o\s+(.+?)@([0-9A-Fa-f]+)\s+<class\s+(AppleUSBXHCI[A-Za-z0-9_]*))", UREGEX_CASE_INSENSITIVE);
    return expression;
}

const RegularExpression& pciNodeExpression() {
    static const RegularExpression expression(R"(\+-o\s+(.+?)@([0-9A-Fa-f,]+)\s+<class\s+IOPCIDevice)",
                                              UREGEX_CASE_INSENSITIVE);
    return expression;
}

const RegularExpression& portNodeExpression() {
    static const RegularExpression expression(
        R"(\+-o\s+((?:HS|SS|USR|PRT|RHUB|HSP|SSP)[A-Za-z0-9]{0,5})@([0-9A-Fa-f]+)\s+<class\s+(AppleUSB(?:20|30)?XHCI(?:Port)?|AppleUSBHostPort))",
        UREGEX_CASE_INSENSITIVE);
    return expression;
}

const RegularExpression& loosePortNodeExpression() {
    static const RegularExpression expression(R"(\+-o\s+((?:HS|SS|USR|PRT)[A-Za-z0-9]{1,4})@([0-9A-Fa-f]+))",
                                              UREGEX_CASE_INSENSITIVE);
    return expression;
}

// Case-insensitive ICU matching lets a few non-ASCII letters (long s, Kelvin
// sign) stand for ASCII ones, so a line with other bytes than ASCII always
// goes to the expression itself.
bool mayHoldNode(std::string_view line, std::string_view lowerClass) {
    if (line.size() > maximumNodeLineBytes) {
        return false;
    }
    return !isASCII(line) ||
           (containsIgnoringASCIICase(line, "<class") && containsIgnoringASCIICase(line, lowerClass));
}

bool mayHoldPort(std::string_view line) {
    if (line.size() > maximumNodeLineBytes) {
        return false;
    }
    if (!isASCII(line)) {
        return true;
    }
    static constexpr std::array<std::string_view, 5> prefixes = {"hs", "ss", "us", "pr", "rh"};
    for (std::size_t at = findNodeMarker(line, 0); at != std::string_view::npos;
         at = findNodeMarker(line, at + 1)) {
        std::size_t i = at + 3;
        const std::size_t blanksStart = i;
        while (i < line.size() && isASCIISpace(line[i])) {
            ++i;
        }
        if (i == blanksStart || i + 2 > line.size()) {
            continue;
        }
        const std::string lowered{asciiLowercased(line[i]), asciiLowercased(line[i + 1])};
        if (std::find(prefixes.begin(), prefixes.end(), lowered) != prefixes.end()) {
            return true;
        }
    }
    return false;
}

std::optional<std::vector<std::string>> firstNodeLineMatch(const RegularExpression& expression,
                                                           const icu::UnicodeString& line) {
    static const RegularExpression blankBehindMarker(R"(\+-o\s)");
    std::unique_ptr<icu::RegexMatcher> matcher = expression.matcher(line);
    std::unique_ptr<icu::RegexMatcher> startMatcher = blankBehindMarker.matcher(line);
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
            return RegularExpression::groups(*matcher);
        }
        status = U_ZERO_ERROR;
        startMatcher->region(at, line.length(), status);
        if (U_SUCCESS(status) && startMatcher->lookingAt(status) && U_SUCCESS(status)) {
            return std::nullopt;
        }
    }
    return std::nullopt;
}

namespace {

constexpr std::size_t none = std::string_view::npos;

class CodePointText {
  public:
    explicit CodePointText(std::string_view text) : text_(text) {}

    std::size_t size() const { return text_.size(); }

    // The code point at `at` and where the next one starts; bad bytes read as
    // U+FFFD, as ICU reads them.
    UChar32 at(std::size_t at, std::size_t& next) const {
        const auto* s = reinterpret_cast<const std::uint8_t*>(text_.data());
        auto i = static_cast<std::int32_t>(at);
        UChar32 c;
        U8_NEXT(s, i, static_cast<std::int32_t>(text_.size()), c);
        next = static_cast<std::size_t>(i);
        return c < 0 ? 0xFFFD : c;
    }

    // Start of the code point that ends at `end`.
    std::size_t previousStart(std::size_t end) const {
        const auto* s = reinterpret_cast<const std::uint8_t*>(text_.data());
        auto i = static_cast<std::int32_t>(end);
        U8_BACK_1(s, 0, i);
        return static_cast<std::size_t>(i);
    }

    bool isSpaceAt(std::size_t at, std::size_t& next) const {
        return at < text_.size() && u_isUWhiteSpace(this->at(at, next));
    }

    // First byte `c` at or after `from`, remembered, since starts only move forward.
    std::size_t next(char c, std::size_t from, std::size_t& cacheFrom, std::size_t& cache) const {
        if (from >= cacheFrom && (cache == none || cache >= from)) {
            return cache;
        }
        const void* found =
            from < text_.size() ? std::memchr(text_.data() + from, c, text_.size() - from) : nullptr;
        cacheFrom = from;
        cache = found ? static_cast<std::size_t>(static_cast<const char*>(found) - text_.data()) : none;
        return cache;
    }

    // End of "<class" matched case-insensitively at `at` (full case folding:
    // long s for s, sharp s for "ss"), or none.
    std::size_t classWordEnd(std::size_t at) const {
        if (at + 4 >= text_.size() || text_[at] != '<' || asciiLowercased(text_[at + 1]) != 'c' ||
            asciiLowercased(text_[at + 2]) != 'l' || asciiLowercased(text_[at + 3]) != 'a') {
            return none;
        }
        std::size_t i = at + 4;
        std::size_t next = i;
        const UChar32 first = this->at(i, next);
        if (first == 0x00DF || first == 0x1E9E) {
            return next;
        }
        for (int letter = 0; letter < 2; ++letter) {
            if (i >= text_.size()) {
                return none;
            }
            const UChar32 c = this->at(i, next);
            if (c != 's' && c != 'S' && c != 0x017F) {
                return none;
            }
            i = next;
        }
        return i;
    }

    std::string_view slice(std::size_t from, std::size_t to) const { return text_.substr(from, to - from); }

  private:
    std::string_view text_;
};

// Bad bytes come out as U+FFFD, the way ICU would have read them.
std::string groupText(std::string_view bytes) {
    if (isValidUTF8(bytes)) {
        return trimmed(bytes);
    }
    std::string repaired;
    icu::UnicodeString::fromUTF8(icu::StringPiece(bytes.data(), static_cast<std::int32_t>(bytes.size())))
        .toUTF8String(repaired);
    return trimmed(repaired);
}

bool isNameRunCharacter(UChar32 c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == ',' ||
           c == 0x017F || c == 0x212A;
}

} // namespace

void forEachAnyNode(std::string_view view, const std::function<bool(std::string, std::string)>& visit) {
    const CodePointText text(view);
    std::size_t lessFrom = none;
    std::size_t less = none;
    std::size_t atSignFrom = none;
    std::size_t atSign = none;
    std::size_t position = 0;
    while (true) {
        const std::size_t start = findNodeMarker(view, position);
        if (start == none) {
            return;
        }
        std::size_t afterBlank = 0;
        if (!text.isSpaceAt(start + 3, afterBlank)) {
            position = start + 1;
            continue;
        }
        const std::size_t classAt = text.next('<', start + 3, lessFrom, less);
        if (classAt == none) {
            return; // no later start has a "<class" behind it either
        }
        const std::size_t nextAt = text.next('@', start + 3, atSignFrom, atSign);
        const std::size_t barrier = nextAt != none && nextAt < classAt ? nextAt : classAt;
        position = barrier + 1; // where the next start goes if this one fails

        // The name group runs from behind the first blank to `nameEnd`, and
        // must hold at least one character.
        std::size_t nameEnd = none;
        std::size_t ignored = 0;
        if (barrier == classAt) {
            const std::size_t blank = text.previousStart(classAt);
            if (blank >= afterBlank && text.isSpaceAt(blank, ignored)) {
                nameEnd = blank;
            }
        } else {
            std::size_t i = barrier + 1;
            std::size_t next = i;
            while (i < classAt && isNameRunCharacter(text.at(i, next))) {
                i = next;
            }
            const std::size_t blanksStart = i;
            while (i < classAt && text.isSpaceAt(i, next)) {
                i = next;
            }
            if (i == classAt && blanksStart < classAt) {
                nameEnd = barrier;
            }
        }
        if (nameEnd == none || nameEnd <= afterBlank) {
            continue;
        }
        const std::size_t wordEnd = text.classWordEnd(classAt);
        std::size_t afterClassBlank = 0;
        if (wordEnd == none || !text.isSpaceAt(wordEnd, afterClassBlank)) {
            continue;
        }
        std::size_t classEnd = view.find_first_of(",>", wordEnd);
        if (classEnd == none) {
            classEnd = view.size();
        }
        if (classEnd <= afterClassBlank) {
            continue;
        }
        if (visit(groupText(text.slice(start + 3, nameEnd)), groupText(text.slice(wordEnd, classEnd)))) {
            return;
        }
        position = classEnd;
    }
}

} // namespace korvane
