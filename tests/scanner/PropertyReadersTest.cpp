#include "scanner/PropertyReaders.h"

#include <gtest/gtest.h>

namespace korvane {
namespace {

using B = ByteBuffer;

TEST(PropertyReaders, NameAndLocationAsALiveSourceReadsThem) {
    const std::pair<PropertyDictionary, const char*> names[] = {
        {{}, "Cls"},
        {{{"IOName", ""}, {"name", "XHC1"}}, "XHC1"},
        {{{"name", B{'X', 'H', 'C', '1', 0}}}, "XHC1"},
        {{{"name", B{0, 'X'}}, {"compatible", B{'p', '1', 0, 'p', '2', 0}}}, "p1"},
        {{{"compatible", "pci1"}}, "Cls"},
        {{{"name", B{0xFF, 0xFE, 0}}}, "Cls"},
    };
    for (const auto& [properties, name] : names) {
        EXPECT_EQ(registryName(properties, "Cls"), name);
    }
    const std::pair<PropertyDictionary, const char*> locations[] = {
        {{}, ""},
        {{{"location", "14a00000"}}, "14A00000"},
        {{{"location", B{'1', 'a', 0}}}, "1A"},
        {{{"locationID", 26}}, "0000001A"},
        {{{"port", B{3, 0, 0, 0}}}, "00000003"},
        {{{"locationID", std::int64_t{0x1FFFFFFFF}}}, "FFFFFFFF"},
    };
    for (const auto& [properties, location] : locations) {
        EXPECT_EQ(registryLocation(properties), location);
    }
}

TEST(PropertyReaders, IntegersFromBytesAndTextWithinSixtyFourBits) {
    const std::pair<PropertyValue, std::optional<std::int64_t>> rows[] = {
        {B{0x86, 0x80, 0, 0, 1}, 0x8086},
        {B{0xFF, 0xFF, 0xFF, 0xFF}, 4294967295},
        {B{}, 0},
        {" 0x1A\n", 26},
        {"-5", -5},
        {"0X10", std::nullopt}, // firmware writes "0x"; a capital X never meant hex here
        {"0x", std::nullopt},
        {"1a", std::nullopt},
        {"9223372036854775808", std::nullopt},
        {"-9223372036854775808", std::numeric_limits<std::int64_t>::min()},
        {PropertyArray{1}, std::nullopt},
    };
    for (const auto& [value, number] : rows) {
        EXPECT_EQ(intProperty("k", PropertyDictionary{{"k", value}}), number);
    }
    EXPECT_EQ(dataProperty("k", PropertyDictionary{{"k", 5}}), (B{5, 0, 0, 0}));
    EXPECT_EQ(dataProperty("k", PropertyDictionary{{"k", "5"}}), std::nullopt);
}

TEST(PropertyReaders, KeysOfOtherKindsBecomeTextAndBaseNamesCutAtTheAtSign) {
    const PropertyKeyedList keyed{{PropertyValue(7), PropertyValue("seven")},
                                  {PropertyValue("HS02"), PropertyValue(2)}};
    EXPECT_EQ(normalizedDictionary(PropertyValue(keyed)), (PropertyDictionary{{"7", "seven"}, {"HS02", 2}}));
    EXPECT_TRUE(normalizedDictionary(PropertyValue("not a dictionary")).empty());

    EXPECT_EQ(baseName("HS01@14@1"), "HS01");
    EXPECT_EQ(baseName(" HS01 @14"), " HS01 ") << "only a name without an at sign is trimmed";
    EXPECT_EQ(baseName("  XHC1\n"), "XHC1");
}

} // namespace
} // namespace korvane
