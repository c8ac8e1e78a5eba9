#include "dumpscan/DumpPropertyReaders.h"

#include "records/PortNumber.h"

#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <vector>

namespace korvane {
namespace {

struct HexCase {
    std::string name;
    std::vector<std::string> keys;
    std::string text;
    std::optional<std::string> expected;
};

class FirstPropertyHexTest : public ::testing::TestWithParam<HexCase> {};

TEST_P(FirstPropertyHexTest, ReadsTheFirstKeyThatHasAByteValue) {
    EXPECT_EQ(firstPropertyHex(GetParam().keys, GetParam().text), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    Readers, FirstPropertyHexTest,
    ::testing::Values(
        HexCase{"KeyOrderBeatsTextOrder",
                {"port", "usb-port-number"},
                "\"usb-port-number\" = <02000000>\n\"port\" = <01000000>",
                "01000000"},
        HexCase{"SecondKeyWhenFirstIsMissing", {"vendor-id", "idVendor"}, "\"idVendor\" = <86 80>", "8680"},
        HexCase{"KeysMatchInAnyCase", {"Vendor-ID"}, "\"vendor-id\" = <86800000>", "86800000"},
        HexCase{"BlanksAmongDigitsGo", {"vendor-id"}, "\"vendor-id\" = <86 80 00 00>", "86800000"},
        HexCase{"DigitsKeepTheirCase", {"device-id"}, "\"device-id\"=<6DA30000>", "6DA30000"},
        HexCase{"EmptyBracketsTryTheNextKey",
                {"port", "usb-port-number"},
                "\"port\" = <>\n\"usb-port-number\" = <03000000>",
                "03000000"},
        HexCase{"ALoneBlankEndsTheSearch",
                {"port", "usb-port-number"},
                "\"port\" = < >\n\"usb-port-number\" = <03000000>",
                ""},
        HexCase{"PlainNumberIsNoByteValue", {"vendor-id"}, "\"vendor-id\" = 32902", std::nullopt},
        HexCase{"KeyCharactersAreLiteral", {"a.b"}, "\"axb\" = <01020304>", std::nullopt},
        HexCase{"XmlDataAsLowerCaseHex",
                {"vendor-id"},
                "<key>vendor-id</key>\n<data>\nhoAAAA==\n</data>",
                "86800000"},
        HexCase{"BrokenBase64TriesTheNextKey",
                {"vendor-id", "idVendor"},
                "<key>vendor-id</key><data>h@AA</data>\"idVendor\" = <8680>",
                "8680"},
        HexCase{"Base64OverSeveralLinesDoesNotMatch",
                {"vendor-id"},
                "<key>vendor-id</key><data>hoAA\nAA==</data>",
                std::nullopt},
        HexCase{"NoKeyNoValue", {}, "\"port\" = <01000000>", std::nullopt}),
    [](const ::testing::TestParamInfo<HexCase>& row) { return row.param.name; });

struct DecodeCase {
    std::string name;
    std::optional<std::string> hex;
    std::optional<std::int64_t> littleEndian;
    std::optional<ByteBuffer> data;
};

class HexDecodingTest : public ::testing::TestWithParam<DecodeCase> {};

TEST_P(HexDecodingTest, DecodesAsLittleEndianNumberAndAsBytes) {
    EXPECT_EQ(decodeLittleEndianHex(GetParam().hex), GetParam().littleEndian);
    EXPECT_EQ(dataFromIORegHex(GetParam().hex), GetParam().data);
}

INSTANTIATE_TEST_SUITE_P(
    Readers, HexDecodingTest,
    ::testing::Values(DecodeCase{"NoText", std::nullopt, std::nullopt, std::nullopt},
                      DecodeCase{"EmptyText", "", std::nullopt, std::nullopt},
                      DecodeCase{"FourBytes", "86800000", 0x8086, ByteBuffer{0x86, 0x80, 0, 0}},
                      DecodeCase{"TwoBytesAreANumberButNoData", "8680", 0x8086, std::nullopt},
                      DecodeCase{"ClassCode", "30030c00", 0x0C0330, ByteBuffer{0x30, 0x03, 0x0C, 0x00}},
                      DecodeCase{"ThreeDigitsAreNothing", "abc", std::nullopt, std::nullopt},
                      DecodeCase{"OddDigitsLeaveASingleLast", "abcde", 0x0ECDAB, std::nullopt},
                      DecodeCase{"SevenDigitsAreNoData", "0100000", 1, std::nullopt},
                      DecodeCase{"DigitsPastTheEighthIgnoredByTheNumber", "0100000002", 1,
                                 ByteBuffer{1, 0, 0, 0, 2}},
                      DecodeCase{"BlanksDontCount", "01 00 00 00", 1, ByteBuffer{1, 0, 0, 0}},
                      DecodeCase{"BadPiecesAreLeftOut", "zz010000", 1, ByteBuffer{1, 0, 0}},
                      DecodeCase{"UpperCaseDigits", "6DA3", 0xA36D, std::nullopt},
                      DecodeCase{"NothingParses", "zzzzzzzz", std::nullopt, std::nullopt}),
    [](const ::testing::TestParamInfo<DecodeCase>& row) { return row.param.name; });

struct IntegerCase {
    std::string name;
    std::vector<std::string> keys;
    std::string text;
    std::optional<std::int64_t> expected;
};

class FirstIntegerPropertyTest : public ::testing::TestWithParam<IntegerCase> {};

TEST_P(FirstIntegerPropertyTest, ReadsHexBeforeDecimalForEachKey) {
    EXPECT_EQ(firstIntegerProperty(GetParam().keys, GetParam().text), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    Readers, FirstIntegerPropertyTest,
    ::testing::Values(
        IntegerCase{"Hex", {"UsbConnector"}, "\"UsbConnector\" = 0x0A", 10},
        IntegerCase{"Decimal", {"UsbConnector"}, "\"UsbConnector\" = 10", 10},
        IntegerCase{"AnyCase", {"UsbConnector"}, "\"usbconnector\" = 255", 255},
        IntegerCase{
            "KeyOrderWins", {"UsbConnector", "portType"}, "\"portType\" = 2\n\"UsbConnector\" = 9", 9},
        IntegerCase{"TooLargeHexReadsAsZero", {"portType"}, "\"portType\" = 0x10000000000000000", 0},
        IntegerCase{"TooLargeDecimalTriesTheNextKey",
                    {"portType", "UsbConnector"},
                    "\"portType\" = 99999999999999999999\n\"UsbConnector\" = 3",
                    3},
        IntegerCase{"XmlInteger", {"UsbConnector"}, "<key>UsbConnector</key>\n<integer>255</integer>", 255},
        IntegerCase{"XmlHexInteger", {"UsbConnector"}, "<key>UsbConnector</key><integer>0x09</integer>", 9},
        IntegerCase{"TextValueIsNoNumber", {"UsbConnector"}, "\"UsbConnector\" = \"3\"", std::nullopt},
        IntegerCase{"ByteValueIsNoNumber", {"UsbConnector"}, "\"UsbConnector\" = <03000000>", std::nullopt}),
    [](const ::testing::TestParamInfo<IntegerCase>& row) { return row.param.name; });

struct LocationCase {
    std::string name;
    std::string location;
    std::int64_t baseByte;
    std::optional<std::int64_t> number;
};

class InferredPortDataFromLocationTest : public ::testing::TestWithParam<LocationCase> {};

TEST_P(InferredPortDataFromLocationTest, CountsFromTheBaseByte) {
    const auto data = inferredPortData(GetParam().location, GetParam().baseByte);
    if (!GetParam().number) {
        EXPECT_EQ(data, std::nullopt);
        return;
    }
    EXPECT_EQ(data, portData(static_cast<std::uint32_t>(*GetParam().number)));
}

INSTANTIATE_TEST_SUITE_P(
    Readers, InferredPortDataFromLocationTest,
    ::testing::Values(LocationCase{"FirstPort", "14100000", 0x14, 1},
                      LocationCase{"EleventhPort", "14B00000", 0x14, 11},
                      LocationCase{"ControllerItselfIsNoPort", "14000000", 0x14, std::nullopt},
                      LocationCase{"NextFirstByte", "15200000", 0x14, 18},
                      LocationCase{"HexPrefixesGo", "0x14300000", 0x14, 3},
                      LocationCase{"TooShort", "141", 0x14, std::nullopt},
                      LocationCase{"UnreadableFirstByteCountsAsBase", "zz300000", 0x14, 3},
                      LocationCase{"BelowTheBase", "13F00000", 0x14, std::nullopt}),
    [](const ::testing::TestParamInfo<LocationCase>& row) { return row.param.name; });

} // namespace
} // namespace korvane
