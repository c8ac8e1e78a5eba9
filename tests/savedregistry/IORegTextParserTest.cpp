#include "savedregistry/IORegTextParser.h"

#include "support/Golden.h"
#include "support/RegistryTrees.h"

#include <gtest/gtest.h>

namespace korvane {
namespace {

TEST(IORegTextParser, BuildsTheTreeFromIndentCellsWithTheNodeLinesStandingInForMissingNames) {
    const auto root = parseIORegText(testDataBytes("savedregistry/ioreg-text-shapes.txt"));
    ASSERT_TRUE(root);
    EXPECT_TRUE(matchesGolden(treeText(*root), "savedregistry/ioreg-text-shapes.txt"));
    EXPECT_EQ(root->children[1]->properties.dictionary().size(), 2U) << "stand-ins never become properties";

    const auto several =
        parseIORegText("+-o A  <class CA, id 0x1, retain 1>\n+-o B  <class CB, id 0x2, retain 1>\n");
    ASSERT_TRUE(several);
    EXPECT_EQ(treeText(*several), " <>\n  A <CA>\n  B <CB>\n");
}

TEST(IORegTextParser, ABrokenValueLosesOnlyItsPropertyAndTextsRunOverLines) {
    // As a saved dump may come: with CR LF line ends.
    std::string text = testDataBytes("savedregistry/ioreg-text-broken-values.txt");
    for (auto at = text.find('\n'); at != std::string::npos; at = text.find('\n', at + 2)) {
        text.insert(at, "\r");
    }
    const auto root = parseIORegText(text);
    ASSERT_TRUE(root);
    // Of a key given twice the last readable value counts, whether the values
    // are read one by one, as a scan does, or all at once.
    const PropertyDictionary expected{
        {"good", 1}, {"CLMVersion", "API: 18.1\n   +-o Data: Oly.Maui\n"}, {"next", 0}};
    EXPECT_EQ(root->properties.dictionary(), expected);
    for (const auto& [key, value] : expected) {
        EXPECT_EQ(root->properties.value(key), value) << key;
    }
    EXPECT_FALSE(root->properties.contains("broken"));
}

TEST(IORegTextParser, MalformedDepthsHangUnderTheDeepestNodeAndNestWithinTheBound) {
    std::string text = "+-o Root  <class R, id 0x1, retain 1>\n"
                       "          +-o Jump  <class J, id 0x2, retain 1>\n";
    for (int depth = 0; depth < 400; ++depth) {
        text += std::string(2 * depth + 2, ' ') + "+-o D" + std::to_string(depth) +
                "  <class D, id 0x3, retain 1>\n";
    }
    const auto root = parseIORegText(text);
    ASSERT_TRUE(root);
    EXPECT_EQ(root->children.front()->name, "Jump")
        << "a line too deep for its predecessor hangs under the deepest";
    // Each node joins its parent's children last, so the last line's branch is the deepest.
    std::size_t depth = 0;
    for (const auto* node = root.get(); !node->children.empty(); node = node->children.back().get()) {
        ++depth;
    }
    EXPECT_LT(depth, 256U);
}

} // namespace
} // namespace korvane
