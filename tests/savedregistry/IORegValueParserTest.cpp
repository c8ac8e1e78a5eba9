#include "savedregistry/IORegValueParser.h"

#include "PropertyValuePrinter.h"

#include <gtest/gtest.h>
#include <string>

namespace korvane {
namespace {

ByteBuffer bytesOf(std::string_view text) {
    return ByteBuffer(text.begin(), text.end());
}

struct ValueCase {
    const char* name;
    friend void PrintTo(const ValueCase& row, std::ostream* out) { *out << row.name; }
    std::string text;
    std::optional<PropertyValue> expected;
};

class IORegValueParserTest : public testing::TestWithParam<ValueCase> {};

TEST_P(IORegValueParserTest, ReadsTheTypedValue) {
    const auto& row = GetParam();
    EXPECT_EQ(parseIORegValue(row.text), row.expected) << row.text;
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

const ValueCase kValueCases[] = {
    {"Text", R"("Darwin Kernel Version 18.5.0")", PropertyValue("Darwin Kernel Version 18.5.0")},
    {"EmptyText", R"("")", PropertyValue("")},
    {"TextWithUnescapedQuotes", R"(""AppleBCMWLANV3-445.4"")", PropertyValue(R"("AppleBCMWLANV3-445.4")")},
    {"TextOverSeveralLines", "\"API: 18.1\nData: Oly.Maui\n\"", PropertyValue("API: 18.1\nData: Oly.Maui\n")},
    {"TextWithMultibyteUTF8", "\"Р\xD0\xB5\xD0\xB7\"", PropertyValue("Р\xD0\xB5\xD0\xB7")},
    {"Decimal", "335544320", PropertyValue(std::int64_t{335544320})},
    {"Zero", "0", PropertyValue(0)},
    {"UnsignedPrintOfNegative", "18446744072635809794", PropertyValue(std::int64_t{-1073741822})},
    {"Hex", "0x1a", PropertyValue(26)},
    {"HexUpperDigits", "0xA36D", PropertyValue(0xA36D)},
    {"Yes", "Yes", PropertyValue(1)},
    {"No", "No", PropertyValue(0)},
    {"HexData", "<86800000>", PropertyValue(ByteBuffer{0x86, 0x80, 0x00, 0x00})},
    {"EmptyData", "<>", PropertyValue(ByteBuffer{})},
    {"TextData", R"(<"pci8086,a36d">)", PropertyValue(bytesOf(std::string("pci8086,a36d") + '\0'))},
    {"TextListData", R"(<"pci8086,7270","pciclass,0c0330","XHC1">)",
     PropertyValue(bytesOf(std::string("pci8086,7270\0pciclass,0c0330\0XHC1\0", 34)))},
    {"Dictionary", R"({"address"=275150536704,"length"=65536})",
     PropertyValue(PropertyDictionary{{"address", std::int64_t{275150536704}}, {"length", 65536}})},
    {"EmptyDictionary", "{}", PropertyValue(PropertyDictionary{})},
    {"Array", R"(("io-apic-0","IOPCIMessagedInterruptController"))",
     PropertyValue(PropertyArray{"io-apic-0", "IOPCIMessagedInterruptController"})},
    {"EmptyArray", "()", PropertyValue(PropertyArray{})},
    {"SetAsArray", R"(["com.apple.driver.A","com.apple.iokit.B"])",
     PropertyValue(PropertyArray{"com.apple.driver.A", "com.apple.iokit.B"})},
    {"ArrayOfDictionaries", R"x((({"address"=1,"length"=2})))x",
     PropertyValue(
         PropertyArray{PropertyValue(PropertyArray{PropertyDictionary{{"address", 1}, {"length", 2}}})})},
    {"DictionaryOfMixedKinds", R"({"UsbCompanionPortNumber"=<13000000>,"Name"="XHC1","On"=Yes,"L"=(1,0x2)})",
     PropertyValue(PropertyDictionary{{"UsbCompanionPortNumber", ByteBuffer{0x13, 0, 0, 0}},
                                      {"Name", "XHC1"},
                                      {"On", 1},
                                      {"L", PropertyArray{1, 2}}})},
    {"QuotesInsideDictionaryText", R"({"k"="say "hi", then go","n"=1})",
     PropertyValue(PropertyDictionary{{"k", R"(say "hi", then go)"}, {"n", 1}})},
    {"SeparatorsInsideDictionaryText", R"x({"a"="x,y}z","b"="(q)"})x",
     PropertyValue(PropertyDictionary{{"a", "x,y}z"}, {"b", "(q)"}})},
    {"PortsTableOfTheHackintosh",
     R"({"HS01"={"UsbConnector"=3,"port"=<01000000>},"SS01"={"port"=<11000000>}})",
     PropertyValue(PropertyDictionary{
         {"HS01", PropertyDictionary{{"UsbConnector", 3}, {"port", ByteBuffer{1, 0, 0, 0}}}},
         {"SS01", PropertyDictionary{{"port", ByteBuffer{0x11, 0, 0, 0}}}}})},
    {"NestedToTheLimit", nested(256), nestedValue(256)},

    {"EmptyInput", "", std::nullopt},
    {"UnterminatedText", R"("abc)", std::nullopt},
    {"TextWithTrailingGarbage", R"("abc" x)", std::nullopt},
    {"UnterminatedDictionary", R"({"a"=1)", std::nullopt},
    {"DictionaryKeyWithoutValue", R"({"a"})", std::nullopt},
    {"UnquotedDictionaryKey", "{a=1}", std::nullopt},
    {"OddHexData", "<123>", std::nullopt},
    {"NonHexData", "<12zz>", std::nullopt},
    {"UnterminatedData", "<1234", std::nullopt},
    {"NumberWithGarbage", "12abc", std::nullopt},
    {"NumberOverflow", "18446744073709551616", std::nullopt},
    {"BareHexPrefix", "0x", std::nullopt},
    {"YesWithMore", "Yes please", std::nullopt},
    {"UnknownWord", "Maybe", std::nullopt},
    {"MissingSeparator", "(1 2)", std::nullopt},
    {"InvalidUTF8Text", "\"experience\xD5s iMac\"", std::nullopt},
    {"TextWithNUL", std::string("\"a\0b\"", 5), std::nullopt},
    {"InvalidUTF8InNestedKey", "{\"k\xD5\"=1}", std::nullopt},
    {"NestedPastTheLimit", nested(300), std::nullopt},
};

INSTANTIATE_TEST_SUITE_P(Values, IORegValueParserTest, testing::ValuesIn(kValueCases),
                         [](const testing::TestParamInfo<ValueCase>& row) { return row.param.name; });

TEST(IORegValueParser, BytesOfTextDataNeedNotBeUTF8) {
    const auto value = parseIORegValue("<\"a\xD5\">");
    ASSERT_TRUE(value.has_value());
    EXPECT_EQ(value, PropertyValue(ByteBuffer{'a', 0xD5, 0}));
}

} // namespace
} // namespace korvane
