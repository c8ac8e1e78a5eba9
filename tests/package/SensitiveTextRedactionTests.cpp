#include "package/SensitiveTextRedaction.h"
#include "support/TestData.h"

#include <gtest/gtest.h>
#include <string>

namespace korvane {
namespace {

// Name, text, and the text as masked.
using RedactionTest = ::testing::TestWithParam<std::vector<std::string>>;

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

TEST(MaskHomeFolder, WritesTheHomeFolderAsTildeOnlyWhereItIsTheWholeFolder) {
    const std::tuple<const char*, const char*, const char*> rows[] = {
        {"/home/ann", "Target Desktop: /home/ann/Desktop", "Target Desktop: ~/Desktop"},
        {"/home/ann/", "/home/ann/a and /home/ann", "~/a and ~"}, // twice, and at the end
        {"/home/ann", "'/home/ann': gone", "'~': gone"},
        {"/home/ann", "/home/anna/x /home/ann.old /home/ann-2", "/home/anna/x /home/ann.old /home/ann-2"},
        {"/", "/home/ann/x", "/home/ann/x"},
        {"", "/home/ann/x", "/home/ann/x"}};
    for (const auto& [home, text, masked] : rows) {
        EXPECT_EQ(maskHomeFolder(text, home), masked) << home << ": " << text;
    }
}

} // namespace
} // namespace korvane
