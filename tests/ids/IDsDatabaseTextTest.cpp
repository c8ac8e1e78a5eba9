#include "ids/IDsDatabaseText.h"

#include "support/TestData.h"

#include <gtest/gtest.h>

namespace korvane {
namespace {

// Name, text, vendor and device ID in hex, and the name they give.
class NameCaseTest : public ::testing::TestWithParam<std::vector<std::string>> {};

TEST_P(NameCaseTest, GivesTheNameTheLinesSpell) {
    const auto& row = GetParam();
    EXPECT_EQ(IDsDatabaseText(row.at(1)).name(std::stoll(row.at(2), nullptr, 16),
                                              std::stoll(row.at(3), nullptr, 16)),
              row.at(4));
}

INSTANTIATE_TEST_SUITE_P(Cases, NameCaseTest, ::testing::ValuesIn(testDataRows("ids/name-cases.txt")),
                         [](const auto& row) { return row.param.at(0); });

TEST(IDsDatabaseText, OversizedTextIsNoDatabase) {
    std::string text = "1b21  Alpha Chips\n\t1142  Hub Two\n";
    text.resize(IDsDatabaseText::maximumTextBytes + 1, '\n');
    EXPECT_EQ(IDsDatabaseText(text).name(0x1B21, 0x1142), "");
}

} // namespace
} // namespace korvane
