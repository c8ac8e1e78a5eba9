#include "PackageTestSupport.h"
#include "package/PersonalityNames.h"

#include <gtest/gtest.h>

namespace korvane {
namespace {

TEST(PersonalityNames, TheSupportClassIsTheControllersOwnElseTheVendorsRule) {
    const std::tuple<std::int64_t, std::int64_t, const char*, const char*> rows[] = {
        {0x8086, 0x15ec, " AppleUSBXHCITR \n", "AppleUSBXHCITR"},
        {0x8086, 0xa36d, "AppleUSBxhciTR", "AppleUSBXHCISPT"}, // the search is case-sensitive
        {0x8086, 0xa36d, "AppleIntelCNLUSBXHCI", "AppleIntelCNLUSBXHCI"},
        {0x8086, 0x9d2f, "", "AppleUSBXHCILPTH"},
        {0x8086, 0x8c31, "", "AppleUSBXHCILPTH"},
        {0x8086, 0x9bff, "", "AppleUSBXHCISPT"},
        {0x8086, 0x9e00, "", "AppleUSBXHCISPT"},
        {0x1b21, 0x3241, "", "AppleUSBXHCIPCI"},
    };
    for (const auto& [vendor, device, ownClass, expected] : rows) {
        auto controller = makeController("XHC1", vendor, device);
        controller.providerClass = ownClass;
        EXPECT_EQ(usbXHCIClassName(controller), expected) << std::hex << device << " " << ownClass;
    }
}

TEST(PersonalityNames, NamesKeepLettersMarksAndDigitsOfAnyScript) {
    const std::pair<const char*, const char*> rows[] = {
        {"A B/C", "A_B_C"},
        {"R\xC3\xA9nesas e\xCC\x81", "R\xC3\xA9nesas_e\xCC\x81"},
        {"\xD9\xA3\xE4\xB8\xAD", "\xD9\xA3\xE4\xB8\xAD"},
        {"x\xF0\x9F\x94\x8Cy", "x_y"}, // an emoji is one scalar
        {"a\377b-_", "a_b-_"},         // so is a bad byte
    };
    for (const auto& [text, expected] : rows) {
        EXPECT_EQ(sanitizePersonalityName(text), expected);
    }
    EXPECT_EQ(supportPersonalityName(makeController("XHC1", 0x1234, 0xabcd)),
              "AppleUSBXHCIPCI Vendor1234_1234_ABCD");
    EXPECT_EQ(supportPersonalityName(makeController("XHC1", 0x1b73, 0x1100)),
              "AppleUSBXHCIPCI FrescoLogic_1B73_1100");
    EXPECT_EQ(mergePersonalityName(makeController("X C/1", 0x8086, 0xa36d), "iMac19,1"), "iMac19,1-X C/1");
    EXPECT_EQ(mergePersonalityName(makeController("", 0x8086, 0xa36d), "Mac"), "Mac-USB_8086_a36d");
}

} // namespace
} // namespace korvane
