#include "dumpscan/DumpPropertyReaders.h"

#include "records/PortNumber.h"

#include <gtest/gtest.h>

namespace korvane {
namespace {

using Keys = std::vector<std::string>;

TEST(DumpPropertyReaders, TheFirstKeyWithAByteValueWinsInIoregTextOrXML) {
    const std::tuple<Keys, std::string, std::optional<std::string>> rows[] = {
        {{"port", "usb-port-number"}, "\"usb-port-number\" = <02000000>\n\"port\" = <01000000>", "01000000"},
        {{"Vendor-ID"}, "\"vendor-id\" = <86 80 00 00>", "86800000"}, // any case, blanks go
        {{"device-id"}, "\"device-id\"=<6DA30000>", "6DA30000"},
        {{"port", "usb-port-number"}, "\"port\" = <>\n\"usb-port-number\" = <03000000>", "03000000"},
        {{"port", "usb-port-number"}, "\"port\" = < >\n\"usb-port-number\" = <03000000>", ""},
        {{"vendor-id"}, "\"vendor-id\" = 32902", std::nullopt},
        {{"a.b"}, "\"axb\" = <01020304>", std::nullopt}, // key characters are literal
        {{"vendor-id"}, "<key>vendor-id</key>\n<data>\nhoAAAA==\n</data>", "86800000"},
        {{"vendor-id", "idVendor"}, "<key>vendor-id</key><data>h@AA</data>\"idVendor\" = <8680>", "8680"},
        {{"vendor-id"}, "<key>vendor-id</key><data>hoAA\nAA==</data>", std::nullopt},
    };
    for (const auto& [keys, text, hex] : rows) {
        EXPECT_EQ(firstPropertyHex(keys, text), hex) << text;
    }
}

TEST(DumpPropertyReaders, HexReadsAsALittleEndianNumberAndAsBytesOfEightDigitsOrMore) {
    const std::tuple<std::optional<std::string>, std::optional<std::int64_t>, std::optional<ByteBuffer>>
        rows[] = {
            {std::nullopt, std::nullopt, std::nullopt},
            {"86800000", 0x8086, ByteBuffer{0x86, 0x80, 0, 0}},
            {"8680", 0x8086, std::nullopt},
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

TEST(DumpPropertyReaders, IntegersAreReadHexBeforeDecimalForEachKeyInTurn) {
    const std::tuple<Keys, std::string, std::optional<std::int64_t>> rows[] = {
        {{"UsbConnector"}, "\"usbconnector\" = 0x0A", 10},
        {{"UsbConnector", "portType"}, "\"portType\" = 2\n\"UsbConnector\" = 9", 9},
        {{"portType"}, "\"portType\" = 0x10000000000000000", 0},
        {{"portType", "UsbConnector"}, "\"portType\" = 99999999999999999999\n\"UsbConnector\" = 3", 3},
        {{"UsbConnector"}, "<key>UsbConnector</key>\n<integer>255</integer>", 255},
        {{"UsbConnector"}, "<key>UsbConnector</key><integer>0x09</integer>", 9},
        {{"UsbConnector"}, "\"UsbConnector\" = \"3\"", std::nullopt},
        {{"UsbConnector"}, "\"UsbConnector\" = <03000000>", std::nullopt},
    };
    for (const auto& [keys, text, number] : rows) {
        EXPECT_EQ(firstIntegerProperty(keys, text), number) << text;
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
