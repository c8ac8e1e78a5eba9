#include "package/SensitiveTextRedaction.h"
#include "support/TestData.h"

#include <gtest/gtest.h>
#include <string>

namespace korvane {
namespace {

// Name, text, and the text as masked.
using RedactionCase = std::vector<std::string>;

class RedactionTest : public ::testing::TestWithParam<RedactionCase> {};

TEST_P(RedactionTest, MasksWhatTheRulesMaskAndNothingElse) {
    EXPECT_EQ(redactSensitiveText(GetParam().at(1)), GetParam().at(2));
}

INSTANTIATE_TEST_SUITE_P(Cases, RedactionTest,
                         ::testing::ValuesIn(testDataRows("package/redaction-cases.txt")),
                         [](const auto& row) { return row.param.at(0); });

TEST(Redaction, ManyOpenersWithoutValuesAreLeftAlone) {
    std::string text;
    for (int i = 0; i < 50; ++i) {
        text += "<key>_items</key><array><dict><key>SerialNumber</key>\n";
    }
    EXPECT_EQ(redactSensitiveText(text), text);
}

struct HomeRow {
    const char* name;
    const char* home;
    const char* text;
    const char* masked;
};

class HomeFolderTest : public ::testing::TestWithParam<HomeRow> {};

TEST_P(HomeFolderTest, WritesTheHomeFolderAsTildeOnlyWhereItIsTheWholeFolder) {
    EXPECT_EQ(maskHomeFolder(GetParam().text, GetParam().home), GetParam().masked);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, HomeFolderTest,
    ::testing::Values(HomeRow{"BelowIt", "/home/ann", "Target Desktop: /home/ann/Desktop",
                              "Target Desktop: ~/Desktop"},
                      HomeRow{"TwiceAndAtTheEnd", "/home/ann/", "/home/ann/a and /home/ann", "~/a and ~"},
                      HomeRow{"QuotedAndColon", "/home/ann", "'/home/ann': gone", "'~': gone"},
                      HomeRow{"ALongerNameIsAnother", "/home/ann", "/home/anna/x /home/ann.old /home/ann-2",
                              "/home/anna/x /home/ann.old /home/ann-2"},
                      HomeRow{"RootOrNoneChangesNothing", "/", "/home/ann/x", "/home/ann/x"},
                      HomeRow{"Empty", "", "/home/ann/x", "/home/ann/x"}),
    [](const auto& row) { return std::string(row.param.name); });

} // namespace
} // namespace korvane
