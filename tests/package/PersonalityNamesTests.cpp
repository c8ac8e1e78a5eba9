#include "PackageTestSupport.h"
#include "package/PersonalityNames.h"

#include <gtest/gtest.h>

namespace korvane {
namespace {

using namespace korvane;

struct ClassCase {
    std::string name;
    std::int64_t vendorID;
    std::int64_t deviceID;
    std::string providerClass;
    std::string expected;
};

class XHCIClassNameTest : public ::testing::TestWithParam<ClassCase> {};

TEST_P(XHCIClassNameTest, OwnClassFirstThenVendorRules) {
    const auto& row = GetParam();
    auto controller = makeController("XHC1", row.vendorID, row.deviceID);
    controller.providerClass = row.providerClass;
    EXPECT_EQ(usbXHCIClassName(controller), row.expected);
}

INSTANTIATE_TEST_SUITE_P(
    Rules, XHCIClassNameTest,
    ::testing::Values(ClassCase{"OwnClassTrimmed", 0x8086, 0x15ec, " AppleUSBXHCITR \n", "AppleUSBXHCITR"},
                      ClassCase{"SearchIsCaseSensitive", 0x8086, 0xa36d, "AppleUSBxhciTR", "AppleUSBXHCISPT"},
                      ClassCase{"IntelClassHoldingUSBXHCIKept", 0x8086, 0xa36d, "AppleIntelCNLUSBXHCI",
                                "AppleIntelCNLUSBXHCI"},
                      ClassCase{"OtherClassFallsThrough", 0x8086, 0xa36d, "", "AppleUSBXHCISPT"},
                      ClassCase{"IntelNineD", 0x8086, 0x9d2f, "", "AppleUSBXHCILPTH"},
                      ClassCase{"IntelEightC", 0x8086, 0x8c31, "", "AppleUSBXHCILPTH"},
                      ClassCase{"IntelNineBIsNotLPT", 0x8086, 0x9bff, "", "AppleUSBXHCISPT"},
                      ClassCase{"IntelNineEIsNotLPT", 0x8086, 0x9e00, "", "AppleUSBXHCISPT"},
                      ClassCase{"ASMedia", 0x1b21, 0x3241, "", "AppleUSBXHCIPCI"}),
    RowName());

struct SanitizeCase {
    std::string name;
    std::string input;
    std::string expected;
};

class SanitizePersonalityNameTest : public ::testing::TestWithParam<SanitizeCase> {};

TEST_P(SanitizePersonalityNameTest, KeepsLettersMarksDigitsHyphenUnderscore) {
    EXPECT_EQ(sanitizePersonalityName(GetParam().input), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, SanitizePersonalityNameTest,
    ::testing::Values(SanitizeCase{"VendorWordUnchanged", "FrescoLogic", "FrescoLogic"},
                      SanitizeCase{"BlankAndSlash", "A B/C", "A_B_C"},
                      SanitizeCase{"AccentedLetterStays", "R\xC3\xA9nesas", "R\xC3\xA9nesas"},
                      SanitizeCase{"CombiningMarkStays", "e\xCC\x81", "e\xCC\x81"},
                      SanitizeCase{"OtherScriptDigitsStay", "\xD9\xA3\xE4\xB8\xAD", "\xD9\xA3\xE4\xB8\xAD"},
                      SanitizeCase{"EmojiIsOneScalar", "x\xF0\x9F\x94\x8Cy", "x_y"},
                      SanitizeCase{"BadByteIsOneUnderscore",
                                   "a\xFF"
                                   "b-_",
                                   "a_b-_"}),
    RowName());

TEST(PersonalityNames, SupportNameHasClassBlankVendorWordAndUpperCaseIDs) {
    EXPECT_EQ(supportPersonalityName(makeController("XHC1", 0x8086, 0xa36d)),
              "AppleUSBXHCISPT Intel_8086_A36D");
    EXPECT_EQ(supportPersonalityName(makeController("XHC1", 0x1234, 0xabcd)),
              "AppleUSBXHCIPCI Vendor1234_1234_ABCD");
    EXPECT_EQ(supportPersonalityName(makeController("XHC1", 0x1b73, 0x1100)),
              "AppleUSBXHCIPCI FrescoLogic_1B73_1100");
    EXPECT_EQ(supportPersonalityName(makeController("XHC1", 0x1022, 0x43d5)),
              "AppleUSBXHCIPCI AMD_1022_43D5");
}

TEST(PersonalityNames, MergeNameKeepsTheControllerNameUncleaned) {
    EXPECT_EQ(mergePersonalityName(makeController("XHC1", 0x8086, 0xa36d), "Mac"), "Mac-XHC1");
    EXPECT_EQ(mergePersonalityName(makeController("X C/1", 0x8086, 0xa36d), "iMac19,1"), "iMac19,1-X C/1");
    EXPECT_EQ(mergePersonalityName(makeController("", 0x8086, 0xa36d), "Mac"), "Mac-USB_8086_a36d");
}

} // namespace
} // namespace korvane
