#include "dumpscan/DumpPropertyReaders.h"

#include "records/PortNumber.h"
#include "support/TestData.h"

#include <gtest/gtest.h>
#include <sstream>

namespace korvane {
namespace {

// Reader, keys, dump text, what it finds ("-" for nothing) and why.
TEST(DumpPropertyReaders, TheFirstKeyWithAValueWinsInIoregTextOrXML) {
    for (const auto& row : testDataRows("dumpscan/property-reader-cases.txt")) {
        std::vector<std::string> keys;
        std::istringstream list(row.at(1));
        for (std::string key; std::getline(list, key, ',');) {
            keys.push_back(key);
        }
        std::optional<std::string> found = firstPropertyHex(keys, row.at(2));
        if (row.at(0) == "integer") {
            const auto number = firstIntegerProperty(keys, row.at(2));
            found = number ? std::optional(std::to_string(*number)) : std::nullopt;
        }
        EXPECT_EQ(found.value_or("-"), row.at(3)) << row.at(4) << ": " << row.at(2);
    }
}

TEST(DumpPropertyReaders, HexReadsAsALittleEndianNumberAndAsBytesOfEightDigitsOrMore) {
    const std::tuple<std::optional<std::string>, std::optional<std::int64_t>, std::optional<ByteBuffer>>
        rows[] = {
            {std::nullopt, std::nullopt, std::nullopt},
            {"86800000", 0x8086, ByteBuffer{0x86, 0x80, 0, 0}},
            {"0000c0ff", 0xFFC00000, ByteBuffer{0, 0, 0xC0, 0xFF}}, // all four bytes, no sign
            {"6DA3", 0xA36D, std::nullopt},
            {"abc", std::nullopt, std::nullopt},
            {"abcde", 0x0ECDAB, std::nullopt}, // odd digits leave a single last
            {"0100000002", 1, ByteBuffer{1, 0, 0, 0, 2}},
            {"01 00 00 00", 1, ByteBuffer{1, 0, 0, 0}},
            {"zz010000", 1, ByteBuffer{1, 0, 0}}, // bad pieces are left out
            {"zzzzzzzz", std::nullopt, std::nullopt},
        };
    for (const auto& [hex, number, data] : rows) {
        EXPECT_EQ(decodeLittleEndianHex(hex), number) << hex.value_or("none");
        EXPECT_EQ(dataFromIORegHex(hex), data) << hex.value_or("none");
    }
}

TEST(DumpPropertyReaders, APortNumberFromALocationCountsFromTheBaseByte) {
    const std::tuple<const char*, std::int64_t, std::optional<std::uint32_t>> rows[] = {
        {"14100000", 0x14, 1},  {"14B00000", 0x14, 11},           {"14000000", 0x14, std::nullopt},
        {"15200000", 0x14, 18}, {"0x14300000", 0x14, 3},          {"141", 0x14, std::nullopt},
        {"zz300000", 0x14, 3},  {"13F00000", 0x14, std::nullopt},
    };
    for (const auto& [location, base, number] : rows) {
        const auto data = inferredPortData(location, base);
        EXPECT_EQ(data, number ? std::optional(portData(*number)) : std::nullopt) << location;
    }
}

} // namespace
} // namespace korvane
