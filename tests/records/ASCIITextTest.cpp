#include "records/ASCIIText.h"

#include <gtest/gtest.h>
#include <string>

namespace korvane {
namespace {

struct SearchCase {
    std::string name;
    std::string text;
    std::string needle;
    bool isFound;
};

class ContainsIgnoringASCIICaseTest : public ::testing::TestWithParam<SearchCase> {};

TEST_P(ContainsIgnoringASCIICaseTest, FindsTheWordInAnyCase) {
    EXPECT_EQ(containsIgnoringASCIICase(GetParam().text, GetParam().needle), GetParam().isFound);
}

INSTANTIATE_TEST_SUITE_P(
    Search, ContainsIgnoringASCIICaseTest,
    ::testing::Values(SearchCase{"MixedCase", "xxBlueTOOTHxx", "bluetooth", true},
                      SearchCase{"AtTheEnd", "an INTERNAL", "internal", true},
                      SearchCase{"RepeatedPrefix", "bluebluetooth", "bluetooth", true},
                      SearchCase{"AlmostOnly", "bluetoot", "bluetooth", false},
                      SearchCase{"SkipsPastAMismatch", "internaXinternal", "internal", true},
                      SearchCase{"NonASCIIAround", "\xC3\xA9internal\xC3\xA9", "internal", true}),
    [](const ::testing::TestParamInfo<SearchCase>& row) { return row.param.name; });

TEST(IsASCII, LooksAtEveryByte) {
    EXPECT_TRUE(isASCII("+-o HS01@14100000"));
    EXPECT_FALSE(isASCII("+-o HS01@14100000 \xC5\xBF"));
}

} // namespace
} // namespace korvane
