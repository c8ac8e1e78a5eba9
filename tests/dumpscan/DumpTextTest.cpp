#include "dumpscan/DumpText.h"

#include <gtest/gtest.h>

namespace korvane {
namespace {

// Where blocks begin and end, the hand-made dumps' expected scans show, rule
// by rule (tests/data/dumpscan/README.md).
TEST(DumpLines, ColumnsCountCharactersAndEveryNewlineCharacterSplits) {
    EXPECT_EQ(DumpLines(std::string_view("\xC3\xA9\xC3\xA9+-o A@1  <class X>")).depth(0), 2);
    const DumpLines lines(std::string_view("a\r\nb\u2028c\u0085d\ve\ff"));
    ASSERT_EQ(lines.size(), 7u);
    EXPECT_EQ(lines.line(1), "");
    EXPECT_EQ(lines.line(3), "c");
    EXPECT_EQ(lines.line(6), "f");
}

} // namespace
} // namespace korvane
