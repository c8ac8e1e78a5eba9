#include "records/PortNumber.h"

#include <gtest/gtest.h>

namespace korvane {
namespace {

struct PortNumberCase {
    const char* name;
    ByteBuffer bytes;
    std::optional<std::int64_t> number;
    const char* hex;
};

class PortNumberTest : public testing::TestWithParam<PortNumberCase> {};

TEST_P(PortNumberTest, ReadsLittleEndianFirstFourBytes) {
    EXPECT_EQ(portNumber(GetParam().bytes), GetParam().number);
    EXPECT_EQ(hexString(GetParam().bytes), GetParam().hex);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, PortNumberTest,
    testing::Values(PortNumberCase{"Empty", {}, std::nullopt, ""},
                    PortNumberCase{"TwoBytes", {0x01, 0x02}, 0x0201, "0102"},
                    PortNumberCase{"FourBytes", {0x03, 0, 0, 0}, 3, "03000000"},
                    PortNumberCase{"FifthByteIgnored", {0x01, 0, 0, 0, 0xff}, 1, "01000000ff"},
                    PortNumberCase{"HighBitIsNotASign", {0xff, 0xff, 0xff, 0xff}, 0xffffffffLL, "ffffffff"},
                    PortNumberCase{"OneByte", {0xab}, 0xab, "ab"}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(PortNumber, ComputedPortDataIsFourLittleEndianBytes) {
    EXPECT_EQ(portData(3), (ByteBuffer{3, 0, 0, 0}));
    EXPECT_EQ(portData(0x01020304), (ByteBuffer{4, 3, 2, 1}));
}

TEST(PortNumber, FromANameReadsItsDigitsAndAddsSixteenForSS) {
    EXPECT_EQ(inferredPortNumberFromName("HS03"), 3u);
    EXPECT_EQ(inferredPortNumberFromName("SS03"), 19u);
    EXPECT_EQ(inferredPortNumberFromName("ss03"), 19u);
    EXPECT_EQ(inferredPortNumberFromName("RHUB"), 0u);
    EXPECT_EQ(inferredPortNumberFromName("SSP1"), 17u);
    EXPECT_EQ(inferredPortNumberFromName("HS99999999999"), 0u) << "past 32 bits";
    EXPECT_EQ(inferredPortNumberFromName("HS\u00B2"), 0u) << "a superscript two is no ASCII digit";
    EXPECT_EQ(inferredPortNumberFromName("\u00DF01"), 17u) << "sharp s upper-cases to SS";
}

} // namespace
} // namespace korvane
