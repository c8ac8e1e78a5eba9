#include "PackageTestSupport.h"
#include "package/KextInfoPlist.h"

#include <gtest/gtest.h>

namespace korvane {
namespace {

using namespace korvane;
using Names = std::vector<std::string>;

// Through XML and back, so the types checked are the ones a reader gets.
class KextInfoPlistTest : public ::testing::Test {
  protected:
    void write(const std::vector<USBControllerMap>& controllers, std::string_view model = "Mac") {
        root = parsePropertyList(propertyListXML(makeKextInfoPlist(controllers, model).get()));
        ASSERT_TRUE(root);
    }
    plist_t personalities() const { return at(root.get(), {"IOKitPersonalities"}); }
    plist_t merge(const std::string& name, std::initializer_list<std::string> below = {}) const {
        return at(at(personalities(), {name, "IOProviderMergeProperties"}), below);
    }

    PlistPtr root;
};

TEST_F(KextInfoPlistTest, HighestWrittenNumberCountsAndZeroOrEmptyPortsAreLeftOut) {
    write({makeController("XHC1", 0x8086, 0xa36d,
                          {makePort("HS01", {1, 0, 0, 0}), makePort("HS17", {17, 0, 0, 0}),
                           makePort("HS02", {2, 0, 0, 0}), makePort("ZERO", {0, 0, 0, 0}),
                           makePort("EMPTY", {})})});
    EXPECT_EQ(describe(merge("Mac-XHC1", {"port-count"})), "<11000000>");
    EXPECT_EQ(keysOf(merge("Mac-XHC1", {"ports"})), (Names{"HS01", "HS02", "HS17"}));
}

TEST_F(KextInfoPlistTest, OnlyEmptyPortDataCountsTheArray) {
    write(
        {makeController("XHC1", 0x8086, 0xa36d, {makePort("A", {}), makePort("B", {}), makePort("C", {})})});
    EXPECT_EQ(describe(merge("Mac-XHC1", {"port-count"})), "<03000000>");
    EXPECT_EQ(describe(merge("Mac-XHC1", {"ports"})), "{}");
}

TEST_F(KextInfoPlistTest, OfTwoEqualPortNamesTheHigherNumberStays) {
    write({makeController("XHC1", 0x8086, 0xa36d,
                          {makePort("HS01", {5, 0, 0, 0}, 9), makePort("HS01", {2, 0, 0, 0}, 0)})});
    EXPECT_EQ(
        describe(merge("Mac-XHC1", {"ports"})),
        R"({HS01={UsbConnector=9, name="HS01", port=<05000000>, usb-port-number=<05000000>, usb-port-type=9}})");
}

TEST_F(KextInfoPlistTest, PortDataKeepsEveryByteAndShortDataCountsLittleEndian) {
    write({makeController("XHC1", 0x1b21, 0x2142,
                          {makePort("LONG", {1, 0, 0, 0, 0xff}, 255), makePort("SHORT", {3, 1}, 10)})});
    EXPECT_EQ(
        describe(merge("Mac-XHC1", {"ports", "LONG"})),
        R"({UsbConnector=255, name="LONG", port=<01000000ff>, usb-port-number=<01000000ff>, usb-port-type=255})");
    EXPECT_EQ(describe(merge("Mac-XHC1", {"port-count"})), "<03010000>"); // 259
}

TEST_F(KextInfoPlistTest, EqualPCIIDsShareTheFirstSupportPersonalityAndKeepTheirMerges) {
    auto first = makeController("XHC2", 0x8086, 0x15ec, {makePort("SSP1", {3, 0, 0, 0})});
    first.usbDeviceName = "First";
    auto second = makeController("XHC3", 0x8086, 0x15ec, {makePort("SSP1", {3, 0, 0, 0})});
    second.usbDeviceName = "Second";
    write({first, second});
    EXPECT_EQ(keysOf(personalities()), (Names{"AppleUSBXHCISPT Intel_8086_15EC", "Mac-XHC2", "Mac-XHC3"}));
    EXPECT_EQ(describe(at(personalities(), {"AppleUSBXHCISPT Intel_8086_15EC", "model"})), "\"First\"");
    EXPECT_EQ(describe(at(personalities(), {"Mac-XHC3", "IOPCIPrimaryMatch"})), "\"0x15ec8086\"");
}

TEST_F(KextInfoPlistTest, LaterControllerOfTheSameNameReplacesTheMerge) {
    write({makeController("XHC1", 0x8086, 0xa36d, {makePort("HS01", {1, 0, 0, 0})}),
           makeController("XHC1", 0x1b21, 0x2142, {makePort("PRT1", {2, 0, 0, 0})})});
    EXPECT_EQ(keysOf(personalities()),
              (Names{"AppleUSBXHCIPCI ASMedia_1B21_2142", "AppleUSBXHCISPT Intel_8086_A36D", "Mac-XHC1"}));
    EXPECT_EQ(keysOf(merge("Mac-XHC1", {"ports"})), (Names{"PRT1"}));
}

TEST_F(KextInfoPlistTest, TemplateFallbackWritesTheTemplatesPortsAndCount) {
    write({makeController("XHC1", 0x8086, 0xa36d), makeController("XHC2", 0x8086, 0x34ed)});
    EXPECT_EQ(describe(merge("Mac-XHC1", {"port-count"})), "<1a000000>");
    EXPECT_EQ(keysOf(merge("Mac-XHC1", {"ports"})).size(), 24u);
    EXPECT_EQ(describe(merge("Mac-XHC1", {"ports", "SS10", "port"})), "<1a000000>");
    EXPECT_EQ(describe(merge("Mac-XHC2", {"port-count"})), "<12000000>"); // above its highest port, 16
}

TEST_F(KextInfoPlistTest, NoPortsAndNoTemplateGivesSupportOnlyAndNoIdentityGivesNothing) {
    write({makeController("XHC1", 0x1b21, 0x2142), makeController("XHC2", 0x1002, 1),
           makeController("XHC3", 0, 0xa36d, {makePort("HS01", {1, 0, 0, 0})}),
           makeController("XHC4", 0x8086, -1, {makePort("HS01", {1, 0, 0, 0})})});
    EXPECT_EQ(keysOf(personalities()),
              (Names{"AppleUSBXHCIPCI AMD_1002_0001", "AppleUSBXHCIPCI ASMedia_1B21_2142"}));
}

TEST_F(KextInfoPlistTest, MergeCarriesTheMachineModelAndTheUncleanedName) {
    write({makeController("X C/1", 0x8086, 0xa36d, {makePort("HS01", {1, 0, 0, 0})})}, "iMac19,1");
    EXPECT_EQ(describe(at(personalities(), {"iMac19,1-X C/1", "IONameMatch"})), "\"X C/1\"");
    EXPECT_EQ(describe(at(personalities(), {"iMac19,1-X C/1", "model"})), "\"iMac19,1\"");
}

} // namespace
} // namespace korvane
