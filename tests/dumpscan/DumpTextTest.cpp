#include "dumpscan/DumpText.h"

#include <gtest/gtest.h>

namespace korvane {
namespace {

// Line numbers in the comments are the indexes the tests use.
constexpr std::string_view tree = "+-o Root  <class IORegistryEntry>\n"  // 0
                                  "  +-o A@1  <class IOService>\n"       // 1
                                  "  | {\n"                              // 2
                                  "  |   \"a\" = 1\n"                    // 3
                                  "  | }\n"                              // 4
                                  "  | +-o B@2  <class IOService>\n"     // 5
                                  "  |   \"b\" = 2\n"                    // 6
                                  "  |   +-oX not a node line\n"         // 7
                                  "  |     +-o C@3  <class IOService>\n" // 8
                                  "  +-o D@4  <class IOService>\n"       // 9
                                  "    \"d\" = 4";                       // 10

TEST(DumpLines, ABlockRunsToTheNextNodeLineThatIsNotDeeper) {
    const DumpLines lines(tree);
    ASSERT_EQ(lines.size(), 11u);
    EXPECT_EQ(lines.depth(5), 4);
    EXPECT_EQ(lines.depth(3), DumpLines::deepest);
    EXPECT_TRUE(lines.isNodeLine(5));
    EXPECT_FALSE(lines.isNodeLine(7));
    EXPECT_EQ(lines.blockEnd(0), 11u);
    EXPECT_EQ(lines.blockEnd(1), 9u);
    EXPECT_EQ(lines.blockEnd(5), 9u);
    // "+-oX" is no node line: it ends no block, but has a block of its own
    // that the deeper C belongs to.
    EXPECT_EQ(lines.blockEnd(7), 9u);
    // A line without the marker is deepest: any node line ends its block.
    EXPECT_EQ(lines.blockEnd(3), 5u);
    EXPECT_EQ(lines.propertiesEnd(1), 5u) << "a node's own lines stop at its first child";
    EXPECT_EQ(lines.propertiesEnd(5), 8u);
    EXPECT_EQ(lines.joined(9, 11), "  +-o D@4  <class IOService>\n    \"d\" = 4");
}

TEST(DumpLines, ColumnsCountCharactersAndEveryNewlineCharacterSplits) {
    EXPECT_EQ(DumpLines(std::string_view("\xC3\xA9\xC3\xA9+-o A@1  <class X>")).depth(0), 2);
    const DumpLines lines(std::string_view("a\r\nb\xE2\x80\xA8"
                                           "c\xC2\x85"
                                           "d\x0B"
                                           "e\x0C"
                                           "f"));
    ASSERT_EQ(lines.size(), 7u);
    EXPECT_EQ(lines.line(1), "");
    EXPECT_EQ(lines.line(3), "c");
    EXPECT_EQ(lines.line(6), "f");
}

} // namespace
} // namespace korvane
