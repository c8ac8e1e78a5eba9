#include "package/SensitiveTextRedaction.h"

#include <gtest/gtest.h>
#include <string>

namespace korvane {
namespace {

struct RedactionCase {
    std::string name;
    std::string input;
    std::string expected;
};

class RedactionTest : public ::testing::TestWithParam<RedactionCase> {};

TEST_P(RedactionTest, MasksWhatTheRulesMaskAndNothingElse) {
    EXPECT_EQ(redactSensitiveText(GetParam().input), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    PropertyLists, RedactionTest,
    ::testing::Values(
        RedactionCase{"StringValue", "<key>SerialNumber</key><string>C02XK1ABJHD3</string>",
                      "<key>SerialNumber</key><string>XX-MASKED-XX</string>"},
        RedactionCase{"DataValueAcrossLines", "<key>ROM</key>\n\t<data>\n\tABEiM0RV\n\t</data>\n<key>x</key>",
                      "<key>ROM</key>\n\t<data>XX-MASKED-XX</data>\n<key>x</key>"},
        RedactionCase{"KeyWithBlanksInside", "<key> IOPlatformUUID </key> <string>abc</string>",
                      "<key> IOPlatformUUID </key> <string>XX-MASKED-XX</string>"},
        RedactionCase{"OnlyWholeKeysCount", "<key>ROMVersion</key><string>1.2</string>",
                      "<key>ROMVersion</key><string>1.2</string>"},
        RedactionCase{"ProfilerItems",
                      "<key>_items</key>\n<array>\n<dict>\n<key>_name</key>\n<string>Hardware UUID</string>\n"
                      "<key>_value</key>\n<string>not-a-uuid</string>\n</dict>",
                      "<key>_items</key>\n<array>\n<dict>\n<key>_name</key>\n<string>Hardware UUID</string>\n"
                      "<key>_value</key>\n<string>XX-MASKED-XX</string>\n</dict>"},
        RedactionCase{"KextKeysUntouched",
                      "<key>IOPCIPrimaryMatch</key>\n<string>0xa36d8086</string>\n<key>port</key>\n"
                      "<data>\nEQAAAA==\n</data>",
                      "<key>IOPCIPrimaryMatch</key>\n<string>0xa36d8086</string>\n<key>port</key>\n"
                      "<data>\nEQAAAA==\n</data>"}),
    [](const auto& row) { return row.param.name; });

INSTANTIATE_TEST_SUITE_P(
    Lines, RedactionTest,
    ::testing::Values(
        RedactionCase{"UUIDAfterALineHeadKeyIsMaskedAsItsValue",
                      "Hardware UUID: 01234567-89AB-CDEF-0123-456789ABCDEF\nnext",
                      "Hardware UUID: XX-MASKED-XX\nnext"},
        RedactionCase{"UUIDMidLineIsMaskedAsAUUID",
                      "see Hardware UUID: 01234567-89ab-cdef-0123-456789abcdef here",
                      "see Hardware UUID: XX-MASKED-UUID here"},
        RedactionCase{"SystemSerialAtLineHeadIsMaskedTwice", "Serial Number (system): C02XK1ABJHD3",
                      "Serial Number (system): XX-MASKED-XX-MASKED-XX"},
        RedactionCase{"SystemSerialMidLine", "x Serial Number (system): C02XK1 rest",
                      "x Serial Number (system): XX-MASKED-XX rest"},
        RedactionCase{"UDIDAndHardwareUUIDMidLine",
                      "a Provisioning UDID: 00008030-001A  b Hardware UUID: ABCD-12",
                      "a Provisioning UDID: XX-MASKED-UUID  b Hardware UUID: XX-MASKED-UUID"},
        RedactionCase{"LineHeadKeyMasksOnlyToTheLineEnd", "  SerialNumber: C02XK1\nkeep me\n",
                      "  SerialNumber: XX-MASKED-XX\nkeep me\n"},
        RedactionCase{"ShortKeyAtLineHeadMasksToTheEndOfTheText", "first\nROM: 001122\nsecond\nthird",
                      "first\nROM: XX-MASKED-XX"},
        RedactionCase{"HyphenatedSerialKeyAtLineHead", "serial-number = abc\nmore",
                      "serial-number = XX-MASKED-XX"},
        RedactionCase{"TabbedKeyAfterACarriageReturn", "a\r\tmlb 7", "a\r\tmlb XX-MASKED-XX"},
        RedactionCase{"LogLineHeadIsATimeStamp", "[14:03:09] ROM: 001122\nnext",
                      "[14:03:09] ROM: 001122\nnext"},
        RedactionCase{"ColonMAC", "en0 a4:83:E7:0b:1C:2d up", "en0 XX:XX:XX:XX:XX:XX up"},
        RedactionCase{"HyphenMACComesOutWithColons", "en1 A4-83-E7-0B-1C-2D", "en1 XX:XX:XX:XX:XX:XX"},
        RedactionCase{"FiveGroupsIsNoMAC", "a4:83:e7:0b:1c", "a4:83:e7:0b:1c"},
        RedactionCase{"NonASCIISurvives",
                      "Gr\xC3\xBC\xC3\x9F"
                      "e \xE4\xB8\xAD SerialNumber x",
                      "Gr\xC3\xBC\xC3\x9F"
                      "e \xE4\xB8\xAD SerialNumber x"},
        RedactionCase{"Empty", "", ""}),
    [](const auto& row) { return row.param.name; });

TEST(Redaction, ManyOpenersWithoutValuesAreLeftAlone) {
    std::string text;
    for (int i = 0; i < 50; ++i) {
        text += "<key>_items</key><array><dict><key>SerialNumber</key>\n";
    }
    EXPECT_EQ(redactSensitiveText(text), text);
}

} // namespace
} // namespace korvane
