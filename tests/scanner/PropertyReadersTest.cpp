#include "scanner/PropertyReaders.h"

#include <functional>
#include <gtest/gtest.h>
#include <limits>

namespace korvane {
namespace {

enum class Reader { name, location, integer, data };

struct ReaderCase {
    std::string name;
    Reader reader;
    PropertyDictionary properties;
    std::string expected; // "none" for no value; buffers in hex

    friend void PrintTo(const ReaderCase& row, std::ostream* out) { *out << row.name; }
};

class PropertyReaderEdgeCases : public ::testing::TestWithParam<ReaderCase> {};

TEST_P(PropertyReaderEdgeCases, GiveTheDocumentedValue) {
    const auto& properties = GetParam().properties;
    std::string actual;
    switch (GetParam().reader) {
    case Reader::name:
        actual = registryName(properties, "Cls");
        break;
    case Reader::location:
        actual = registryLocation(properties);
        break;
    case Reader::integer: {
        const auto value = intProperty("k", properties);
        actual = value ? std::to_string(*value) : "none";
        break;
    }
    case Reader::data: {
        const auto value = dataProperty("k", properties);
        actual = value ? hexString(*value) : "none";
        break;
    }
    }
    EXPECT_EQ(actual, GetParam().expected);
}

using B = ByteBuffer;

// clang-format off
INSTANTIATE_TEST_SUITE_P(Readers, PropertyReaderEdgeCases, ::testing::Values(
    ReaderCase{"NoPropertiesGivesClassAsName", Reader::name, {}, "Cls"},
    ReaderCase{"NoPropertiesGivesEmptyLocation", Reader::location, {}, ""},
    ReaderCase{"EmptyIONameFallsThroughToName", Reader::name, {{"IOName", ""}, {"name", "XHC1"}}, "XHC1"},
    ReaderCase{"NameBytesStopAtZero", Reader::name, {{"name", B{'X', 'H', 'C', '1', 0}}}, "XHC1"},
    ReaderCase{"LeadingZeroGoesOnToCompatible", Reader::name,
               {{"name", B{0, 'X'}}, {"compatible", B{'p', '1', 0, 'p', '2', 0}}}, "p1"},
    ReaderCase{"CompatibleTextIsNotRead", Reader::name, {{"compatible", "pci1"}}, "Cls"},
    ReaderCase{"InvalidUTF8IsNoName", Reader::name, {{"name", B{0xFF, 0xFE, 0}}}, "Cls"},
    ReaderCase{"LocationTextUpperCased", Reader::location, {{"location", "14a00000"}}, "14A00000"},
    ReaderCase{"LocationBytesUpperCased", Reader::location, {{"location", B{'1', 'a', 0}}}, "1A"},
    ReaderCase{"LocationFromLocationID", Reader::location, {{"locationID", 26}}, "0000001A"},
    ReaderCase{"LocationFromPortBuffer", Reader::location, {{"port", B{3, 0, 0, 0}}}, "00000003"},
    ReaderCase{"LocationKeepsLow32Bits", Reader::location, {{"locationID", std::int64_t{0x1FFFFFFFF}}}, "FFFFFFFF"},
    ReaderCase{"IntFromBuffer", Reader::integer, {{"k", B{0x86, 0x80, 0, 0}}}, "32902"},
    ReaderCase{"IntReadsFourBytesOnly", Reader::integer, {{"k", B{0x86, 0x80, 0, 0, 1}}}, "32902"},
    ReaderCase{"IntFromBufferNeverNegative", Reader::integer, {{"k", B{0xFF, 0xFF, 0xFF, 0xFF}}}, "4294967295"},
    ReaderCase{"IntFromEmptyBufferIsZero", Reader::integer, {{"k", B{}}}, "0"},
    ReaderCase{"IntFromTrimmedHexText", Reader::integer, {{"k", " 0x1A\n"}}, "26"},
    ReaderCase{"IntFromDecimalText", Reader::integer, {{"k", "12"}}, "12"},
    ReaderCase{"IntSignedText", Reader::integer, {{"k", "-5"}}, "-5"},
    ReaderCase{"IntCapitalXIsNoHex", Reader::integer, {{"k", "0X10"}}, "none"},
    ReaderCase{"IntBarePrefixIsNone", Reader::integer, {{"k", "0x"}}, "none"},
    ReaderCase{"IntBlankTextIsNone", Reader::integer, {{"k", "  "}}, "none"},
    ReaderCase{"IntHexDigitsInDecimalIsNone", Reader::integer, {{"k", "1a"}}, "none"},
    ReaderCase{"IntOverflowIsNone", Reader::integer, {{"k", "9223372036854775808"}}, "none"},
    ReaderCase{"IntMostNegativeFits", Reader::integer, {{"k", "-9223372036854775808"}}, "-9223372036854775808"},
    ReaderCase{"IntOfArrayIsNone", Reader::integer, {{"k", PropertyArray{1}}}, "none"},
    ReaderCase{"IntOfAbsentKeyIsNone", Reader::integer, {}, "none"},
    ReaderCase{"IntOfTextFive", Reader::integer, {{"k", "5"}}, "5"},
    ReaderCase{"DataOfTextFiveIsNone", Reader::data, {{"k", "5"}}, "none"},
    ReaderCase{"DataFromNumber", Reader::data, {{"k", 5}}, "05000000"},
    ReaderCase{"DataBufferUnchanged", Reader::data, {{"k", B{1, 2, 3}}}, "010203"}),
    [](const ::testing::TestParamInfo<ReaderCase>& row) { return row.param.name; });
// clang-format on

TEST(NormalizedDictionary, KeysOfOtherKindsBecomeText) {
    const PropertyDictionary plain{{"HS01", PropertyDictionary{{"port", 1}}}};
    EXPECT_EQ(normalizedDictionary(PropertyValue(plain)), plain);

    const PropertyKeyedList keyed{{PropertyValue(7), PropertyValue("seven")},
                                  {PropertyValue("HS02"), PropertyValue(2)}};
    const PropertyDictionary expected{{"7", "seven"}, {"HS02", 2}};
    EXPECT_EQ(normalizedDictionary(PropertyValue(keyed)), expected);

    EXPECT_TRUE(normalizedDictionary(PropertyValue("not a dictionary")).empty());
}

TEST(Flatten, IsPreOrderAndIncludesTheNode) {
    NativeUSBNode lone("Lone", "", "", {}, nullptr);
    ASSERT_EQ(flatten(lone).size(), 1u);
    EXPECT_EQ(flatten(lone).front(), &lone);

    NativeUSBNode root("A", "", "", {}, nullptr);
    auto& b = root.addChild("B", "", "", {});
    b.addChild("C", "", "", {});
    root.addChild("D", "", "", {});
    std::string order;
    for (const auto* node : flatten(root)) {
        order += node->name;
    }
    EXPECT_EQ(order, "ABCD");
}

TEST(BaseName, CutsAtFirstAtSignElseTrims) {
    EXPECT_EQ(baseName("XHCI@14"), "XHCI");
    EXPECT_EQ(baseName("HS01@14@1"), "HS01");
    EXPECT_EQ(baseName(" HS01 @14"), " HS01 ");
    EXPECT_EQ(baseName("  XHC1\n"), "XHC1");
}

} // namespace
} // namespace korvane
