#include "base/Text.h"

#include <gtest/gtest.h>

namespace korvane {
namespace {

TEST(Text, StrictUTF8IsAllOrNothing) {
    const std::pair<std::string, bool> rows[] = {
        {"", true},
        {"caf\xc3\xa9 \xf0\x9f\x94\x8c", true},
        {std::string("a\0b", 3), true},
        {"experience\xd5s iMac", false}, // the Mac Roman apostrophe of a real dump
        {"\xed\xa0\x80", false},         // a surrogate
    };
    for (const auto& [bytes, isValid] : rows) {
        EXPECT_EQ(strictUTF8(bytes), isValid ? bytes : "") << bytes;
    }
}

TEST(Text, TrimmedRemovesUnicodeWhiteSpaceOnlyAtTheEnds) {
    EXPECT_EQ(trimmed(" \t\r\n a b \n"), "a b");
    EXPECT_EQ(trimmed("\xc2\xa0x\xe2\x80\xa8"), "x") << "no-break space and line separator";
    EXPECT_EQ(trimmed(" \n "), "");
    EXPECT_EQ(trimmed("\xd5 "), "\xd5") << "a stray byte is content, not space";
}

} // namespace
} // namespace korvane
