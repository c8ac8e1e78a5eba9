#include "records/Text.h"

#include "records/CollectorError.h"

#include <gtest/gtest.h>

namespace korvane {
namespace {

struct UTF8Case {
    const char* name;
    std::string bytes;
    bool valid;
};

class StrictUTF8Test : public testing::TestWithParam<UTF8Case> {};

TEST_P(StrictUTF8Test, AllOrNothing) {
    EXPECT_EQ(isValidUTF8(GetParam().bytes), GetParam().valid);
    EXPECT_EQ(strictUTF8(GetParam().bytes), GetParam().valid ? GetParam().bytes : "");
}

INSTANTIATE_TEST_SUITE_P(Cases, StrictUTF8Test,
                         testing::Values(UTF8Case{"Empty", "", true}, UTF8Case{"Ascii", "plain\n", true},
                                         UTF8Case{"TwoAndFourByte", "caf\xc3\xa9 \xf0\x9f\x94\x8c", true},
                                         UTF8Case{"EmbeddedNul", std::string("a\0b", 3), true},
                                         UTF8Case{"MacRomanApostrophe", "experience\xd5s iMac", false},
                                         UTF8Case{"TruncatedAtEnd", "ok\xe2\x82", false},
                                         UTF8Case{"Overlong", "\xc0\xaf", false},
                                         UTF8Case{"Surrogate", "\xed\xa0\x80", false},
                                         UTF8Case{"BeyondUnicode", "\xf4\x90\x80\x80", false}),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(TextTest, TrimmedRemovesUnicodeWhiteSpaceOnlyAtTheEnds) {
    EXPECT_EQ(trimmed(" \t\r\n a b \n"), "a b");
    EXPECT_EQ(trimmed("\xc2\xa0"
                      "x"
                      "\xe2\x80\xa8"),
              "x")
        << "no-break space and line separator";
    EXPECT_EQ(trimmed(" \n "), "");
    EXPECT_EQ(trimmed("\xd5 "), "\xd5") << "a stray byte is content, not space";
}

TEST(TextTest, CollectorErrorDescriptionIsTheTextForEitherCase) {
    const auto failed = CollectorError::operationFailed("Command failed: x \nboom");
    EXPECT_EQ(failed.description(), "Command failed: x \nboom");
    EXPECT_STREQ(failed.what(), "Command failed: x \nboom");
    EXPECT_EQ(failed.kind(), CollectorError::Kind::operationFailed);
    EXPECT_EQ(CollectorError::missingTool("ditto").description(), "ditto");
}

} // namespace
} // namespace korvane
