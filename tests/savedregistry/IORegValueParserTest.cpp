#include "savedregistry/IORegValueParser.h"

#include "support/TestData.h"

#include <gtest/gtest.h>

namespace korvane {
namespace {

ByteBuffer bytesOf(std::string_view text) {
    return ByteBuffer(text.begin(), text.end());
}

std::string nested(int depth) {
    return std::string(depth, '(') + "1" + std::string(depth, ')');
}

PropertyValue nestedValue(int depth) {
    PropertyValue value(1);
    for (int i = 0; i < depth; ++i) {
        value = PropertyValue(PropertyArray{value});
    }
    return value;
}

TEST(IORegValueParser, ReadsEachKindAsIoregPrintsIt) {
    const std::pair<std::string, PropertyValue> rows[] = {
        {R"(""AppleBCMWLANV3-445.4"")", R"("AppleBCMWLANV3-445.4")"}, // quotes inside are not escaped
        {"\"API: 18.1\nData: Oly.Maui\n\"", "API: 18.1\nData: Oly.Maui\n"},
        {"18446744072635809794", std::int64_t{-1073741822}}, // ioreg prints signed values unsigned
        {"0xA36D", 0xA36D},
        {"Yes", 1},
        {"<86800000>", ByteBuffer{0x86, 0x80, 0x00, 0x00}},
        {"<>", ByteBuffer{}},
        {R"(<"pci8086,7270","XHC1">)", bytesOf(std::string("pci8086,7270\0XHC1\0", 18))},
        {"<\"a\xD5\">", ByteBuffer{'a', 0xD5, 0}}, // text data need not be UTF-8
        {R"(["com.apple.driver.A"])", PropertyArray{"com.apple.driver.A"}},
        {R"({"UsbCompanionPortNumber"=<13000000>,"On"=Yes,"L"=(1,0x2)})",
         PropertyDictionary{
             {"UsbCompanionPortNumber", ByteBuffer{0x13, 0, 0, 0}}, {"On", 1}, {"L", PropertyArray{1, 2}}}},
        {R"x({"k"="say "hi", then go","a"="x,y}z"})x",
         PropertyDictionary{{"k", R"(say "hi", then go)"}, {"a", "x,y}z"}}},
        {nested(256), nestedValue(256)},
    };
    for (const auto& [text, value] : rows) {
        EXPECT_EQ(parseIORegValue(text), value) << text;
    }
}

TEST(IORegValueParser, WhatCantBeReadAsAWholeGivesNoValue) {
    for (const auto& row : testDataRows("savedregistry/refused-values.txt")) {
        EXPECT_EQ(parseIORegValue(row.at(1)), std::nullopt) << row.at(0);
    }
    EXPECT_EQ(parseIORegValue(nested(300)), std::nullopt) << "nested past the bound";
}

} // namespace
} // namespace korvane
