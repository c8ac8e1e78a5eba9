#include "scanner/PropertyReaders.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace korvane {
namespace {

TEST(NameOrdering, ReadsDigitRunsAsNumbersAndIgnoresCase) {
    EXPECT_TRUE(localizedStandardLess("2", "10"));
    EXPECT_FALSE(localizedStandardLess("10", "2"));
    EXPECT_TRUE(localizedStandardLess("HS1", "HS02"));
    EXPECT_TRUE(localizedStandardLess("hs2", "HS10"));
    EXPECT_TRUE(localizedStandardLess("HS10", "ss1"));
}

TEST(NameOrdering, IsATotalOrderEvenForTextsTheCollationCallsEqual) {
    std::vector<std::string> names{"HS10", "hs1", "HS2", "HS1", "Hs1", "HS01", std::string("\xFF\xFE", 2)};
    std::vector<std::string> reversed(names.rbegin(), names.rend());
    auto less = [](const auto& a, const auto& b) { return localizedStandardLess(a, b); };
    std::sort(names.begin(), names.end(), less);
    std::sort(reversed.begin(), reversed.end(), less);
    EXPECT_EQ(names, reversed);
    for (const auto& name : names) {
        EXPECT_FALSE(localizedStandardLess(name, name));
    }
}

} // namespace
} // namespace korvane
