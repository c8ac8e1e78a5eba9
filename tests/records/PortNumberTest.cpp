#include "records/PortNumber.h"

#include <gtest/gtest.h>

namespace korvane {
namespace {

TEST(PortNumber, DataReadsLittleEndianFromItsFirstFourBytes) {
    const std::pair<ByteBuffer, std::optional<std::int64_t>> rows[] = {
        {{}, std::nullopt},         {{0xab}, 0xab},
        {{0x01, 0x02}, 0x0201},     {{0x01, 0x02, 0x03}, 0x030201},
        {{0x01, 0, 0, 0, 0xff}, 1}, {{0xff, 0xff, 0xff, 0xff}, 0xffffffffLL}, // the high bit is no sign
    };
    for (const auto& [bytes, number] : rows) {
        EXPECT_EQ(portNumber(bytes), number) << hexString(bytes);
    }
    EXPECT_EQ(portData(0x01020304), (ByteBuffer{4, 3, 2, 1}));
}

TEST(PortNumber, FromANameReadsItsDigitsAndAddsSixteenForSS) {
    const std::pair<const char*, std::uint32_t> rows[] = {
        {"HS03", 3}, {"SS03", 19},         {"ss03", 19},    {"SSP1", 17},
        {"RHUB", 0}, {"HS99999999999", 0}, {"HS\u00B2", 0}, {"\u00DF01", 17},
    };
    for (const auto& [name, number] : rows) {
        EXPECT_EQ(inferredPortNumberFromName(name), number) << name;
    }
}

} // namespace
} // namespace korvane
