#include "dumpscan/DumpPatterns.h"

#include "base/Text.h"

#include <gtest/gtest.h>
#include <memory>
#include <random>
#include <sstream>
#include <unicode/regex.h>
#include <utility>
#include <vector>

namespace korvane {
namespace {

using Matches = std::vector<std::pair<std::string, std::string>>;

Matches handWritten(std::string_view text) {
    Matches matches;
    forEachAnyNode(text, [&](std::string name, std::string className) {
        matches.emplace_back(std::move(name), std::move(className));
        return false;
    });
    return matches;
}

// The expression itself, run by ICU: what the hand-written matcher must equal.
Matches byICU(std::string_view text) {
    UErrorCode status = U_ZERO_ERROR;
    UParseError where{};
    static const std::unique_ptr<icu::RegexPattern> pattern(icu::RegexPattern::compile(
        u"\\+-o\\s+([^@<]+)@?[A-Za-z0-9,]*\\s+<class\\s+([^,>]+)", UREGEX_CASE_INSENSITIVE, where, status));
    const icu::UnicodeString input =
        icu::UnicodeString::fromUTF8(icu::StringPiece(text.data(), static_cast<std::int32_t>(text.size())));
    std::unique_ptr<icu::RegexMatcher> matcher(pattern->matcher(input, status));
    Matches matches;
    while (matcher->find(status) && U_SUCCESS(status)) {
        std::string name;
        std::string className;
        matcher->group(1, status).toUTF8String(name);
        matcher->group(2, status).toUTF8String(className);
        matches.emplace_back(trimmed(name), trimmed(className));
    }
    return matches;
}

TEST(AnyNode, FindsNodeNamesAndClassesAsTheExpressionDoes) {
    const std::pair<std::string, Matches> rows[] = {
        {"+-o HS01@14100000  <class AppleUSB20XHCIPort, id 0x1>", {{"HS01", "AppleUSB20XHCIPort"}}},
        {"+-o A\n  \"x\" = 1\n  +-o B@1  <class C>", {{"A\n  \"x\" = 1\n  +-o B", "C"}}},
        {"+-o A@1<class C>", {}},
        {"+-o A@1  <cla\xC3\x9F C>", {{"A", "C"}}},
        {"+-o   <class C>", {{"", "C"}}},
    };
    for (const auto& [text, expected] : rows) {
        EXPECT_EQ(handWritten(text), expected) << text;
        EXPECT_EQ(byICU(text), expected) << text;
    }
}

TEST(AnyNode, AgreesWithTheExpressionOnRandomPieces) {
    // Pieces of node lines, with letters ICU folds onto ASCII ones (long s,
    // Kelvin sign, sharp s) and bytes that are no UTF-8, split at each "|".
    std::vector<std::string> pieces;
    std::istringstream split(
        "+-o|+-O|+-| |  |\n|\t|@|@1C,4|<class|<CLASS|<cla\xC3\x9F|<cla\xC5\xBFs|<|>|,|a|Z9|\xC5\xBF|"
        "\xE2\x84\xAA|\xC2\xA0|\xC3\xA9| <class IOService, id 1>|HS01|\xFF|\xC5|\xE2\x80");
    for (std::string piece; std::getline(split, piece, '|');) {
        pieces.push_back(piece);
    }
    std::mt19937 random(20261122);
    std::uniform_int_distribution<std::size_t> pick(0, pieces.size() - 1);
    std::uniform_int_distribution<int> length(1, 24);
    for (int round = 0; round < 4000; ++round) {
        std::string text;
        for (int n = length(random); n > 0; --n) {
            text += pieces[pick(random)];
        }
        ASSERT_EQ(handWritten(text), byICU(text)) << "text: " << text;
    }
}

} // namespace
} // namespace korvane
