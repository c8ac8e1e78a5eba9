#include "scanner/PropertyReaders.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace korvane {
namespace {

TEST(LocalizedStandardLess, ReadsDigitRunsAsNumbersAndIgnoresCase) {
    EXPECT_TRUE(localizedStandardLess("2", "10"));
    EXPECT_FALSE(localizedStandardLess("10", "2"));
    EXPECT_TRUE(localizedStandardLess("HS1", "HS02"));
    EXPECT_TRUE(localizedStandardLess("HS02", "HS10"));
    EXPECT_TRUE(localizedStandardLess("hs2", "HS10"));
    EXPECT_TRUE(localizedStandardLess("HS10", "ss1"));
    EXPECT_TRUE(localizedStandardLess("", "a"));
}

TEST(LocalizedStandardLess, IsATotalOrderEvenForTextsEqualToTheCollation) {
    // Equal to the collation: case, and leading zeros of a digit run.
    const std::vector<std::string> pairs[] = {{"hs1", "HS1"}, {"HS01", "HS1"}};
    for (const auto& pair : pairs) {
        EXPECT_NE(localizedStandardLess(pair[0], pair[1]), localizedStandardLess(pair[1], pair[0]))
            << pair[0];
        EXPECT_FALSE(localizedStandardLess(pair[0], pair[0]));
    }
    std::vector<std::string> names{"HS10", "hs1", "HS2", "HS1", "Hs1"};
    std::vector<std::string> reversed(names.rbegin(), names.rend());
    std::sort(names.begin(), names.end(),
              [](const auto& a, const auto& b) { return localizedStandardLess(a, b); });
    std::sort(reversed.begin(), reversed.end(),
              [](const auto& a, const auto& b) { return localizedStandardLess(a, b); });
    EXPECT_EQ(names, reversed);
    EXPECT_EQ(names.back(), "HS10");
}

TEST(LocalizedStandardLess, ToleratesBytesThatAreNoUTF8) {
    const std::string bad("\xFF\xFE", 2);
    EXPECT_NE(localizedStandardLess(bad, "a"), localizedStandardLess("a", bad));
}

} // namespace
} // namespace korvane
