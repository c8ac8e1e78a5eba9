#include "scanner/PlatformModel.h"

#include <gtest/gtest.h>

namespace korvane {
namespace {

ByteBuffer bytes(std::string_view text) {
    return ByteBuffer(text.begin(), text.end());
}

// The platform node's model as ioreg gives it (bytes ending in a zero), as a
// snapshot may (a string), and what names no model.
TEST(PlatformModel, ReadsThePlatformNodesModelAndNothingElse) {
    const std::pair<PropertyValue, std::optional<std::string>> rows[] = {
        {bytes(std::string_view("iMacPro1,1\0", 11)), "iMacPro1,1"},
        {PropertyValue(" Macmini8,1\n"), "Macmini8,1"},
        {bytes("  "), std::nullopt},
        {bytes(std::string_view("iMac\x01", 5)), std::nullopt},
        {PropertyValue(std::string(65, 'M')), std::nullopt},
        {PropertyValue(7), std::nullopt},
    };
    for (const auto& [value, expected] : rows) {
        NativeUSBNode root("Root", "", "IORegistryEntry", {}, nullptr);
        root.addChild("AppleACPIPlatformExpert", "", "IOPlatformExpertDevice", {{"model", value}});
        EXPECT_EQ(platformModel(root), expected) << expected.value_or("-");
    }
    NativeUSBNode root("Root", "", "IORegistryEntry", {}, nullptr);
    root.addChild("XHC1", "14000000", "AppleUSBXHCISPT", {{"model", "iMac19,1"}});
    EXPECT_EQ(platformModel(root), std::nullopt) << "only the platform node names the machine";
}

} // namespace
} // namespace korvane
