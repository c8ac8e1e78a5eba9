#include "scanner/ControllerDiscovery.h"

#include "ScannerTestSupport.h"

#include <gtest/gtest.h>

namespace korvane {
namespace {

struct ClassCodeCase {
    std::string name;
    std::string className;
    PropertyValue classCode;
    bool isController;

    friend void PrintTo(const ClassCodeCase& row, std::ostream* out) { *out << row.name; }
};

class ClassCodes : public ::testing::TestWithParam<ClassCodeCase> {};

TEST_P(ClassCodes, QualifyOnlyXHCIInEitherByteOrder) {
    const auto& param = GetParam();
    NativeUSBNode node("XHC1", "14", param.className, {{"class-code", param.classCode}}, nullptr);
    EXPECT_EQ(isUSBControllerPCIDevice(node), param.isController);
}

using ClassRow = ClassCodeCase;
using B = ByteBuffer;

// clang-format off
INSTANTIATE_TEST_SUITE_P(PCIDevice, ClassCodes, ::testing::Values(
    ClassRow{"BufferWithRevisionByte", "IOPCIDevice", B{0x00, 0x30, 0x03, 0x0C}, true},
    ClassRow{"BufferWithoutRevisionByte", "IOPCIDevice", B{0x30, 0x03, 0x0C, 0x00}, true},
    ClassRow{"NumberReversed", "IOPCIDevice", std::int64_t{0x30030C00}, true},
    ClassRow{"NumberWithRevision", "IOPCIDevice", std::int64_t{0x0C033004}, true},
    ClassRow{"NumberWithHighGarbage", "IOPCIDevice", std::int64_t{0x7F0C0330}, true},
    ClassRow{"EHCIIsNot", "IOPCIDevice", std::int64_t{0x0C0320}, false},
    ClassRow{"OtherProgrammingInterface", "IOPCIDevice", B{0x00, 0x33, 0x0C, 0x00}, false},
    ClassRow{"NotAPCIDevice", "IOService", std::int64_t{0x0C0330}, false},
    ClassRow{"TextClassCode", "IOPCIDevice", "0x0c0330", true}),
    [](const ::testing::TestParamInfo<ClassRow>& row) { return row.param.name; });
// clang-format on

TEST(ClassCodes, MissingClassCodeDoesNotQualify) {
    NativeUSBNode node("XHC1", "14", "IOPCIDevice", {}, nullptr);
    EXPECT_FALSE(isUSBControllerPCIDevice(node));
}

struct IdentityTextCase {
    std::string name;
    std::string text;
    std::optional<PCIIdentity> identity;

    friend void PrintTo(const IdentityTextCase& row, std::ostream* out) { *out << row.name; }
};

class IdentityTexts : public ::testing::TestWithParam<IdentityTextCase> {};

TEST_P(IdentityTexts, FirstMatchOfEachExpressionDecides) {
    EXPECT_EQ(parsePCIIdentity(GetParam().text), GetParam().identity);
}

using TextRow = IdentityTextCase;

// clang-format off
INSTANTIATE_TEST_SUITE_P(Parse, IdentityTexts, ::testing::Values(
    TextRow{"Compatible", "pci1b21,1242", PCIIdentity{0x1B21, 0x1242}},
    TextRow{"Capitals", "PCI8086,A36D", PCIIdentity{0x8086, 0xA36D}},
    TextRow{"BlankSeparator", "x pci8086 a36d", PCIIdentity{0x8086, 0xA36D}},
    TextRow{"ZerosFallToSecondExpression", "pci0000,0000 1033:0194", PCIIdentity{0x1033, 0x0194}},
    TextRow{"FirstMatchOnlyThenNoColon", "pci0000,0000 pci1033,0194", std::nullopt},
    TextRow{"Underscore", "PCI\\VEN 1022_149c", PCIIdentity{0x1022, 0x149C}},
    TextRow{"Nothing", "XHC1 14 IOPCIDevice", std::nullopt}),
    [](const ::testing::TestParamInfo<TextRow>& row) { return row.param.name; });
// clang-format on

TEST(PCIIdentityOfNode, FallsBackToTextWhenIDsAreZeroOrMissing) {
    const ByteBuffer compatible{'p', 'c', 'i', '1', 'b', '2', '1', ',', '1', '2', '4', '2', 0};
    NativeUSBNode zeroVendor(
        "XHC2", "", "IOPCIDevice",
        {{"vendor-id", ByteBuffer{0, 0, 0, 0}}, {"device-id", 0x1242}, {"compatible", compatible}}, nullptr);
    NativeUSBNode noDevice("XHC2", "", "IOPCIDevice", {{"vendor-id", 0x1B21}, {"compatible", compatible}},
                           nullptr);
    EXPECT_EQ(pciIdentity(zeroVendor), (PCIIdentity{0x1B21, 0x1242}));
    EXPECT_EQ(pciIdentity(noDevice), (PCIIdentity{0x1B21, 0x1242}));

    NativeUSBNode fromBuffers(
        "XHC1", "14", "IOPCIDevice",
        {{"vendor-id", ByteBuffer{0x86, 0x80, 0, 0}}, {"device-id", ByteBuffer{0x6D, 0xA3, 0, 0}}}, nullptr);
    EXPECT_EQ(pciIdentity(fromBuffers), (PCIIdentity{0x8086, 0xA36D}));
    NativeUSBNode none("XHC1", "14", "IOPCIDevice", {}, nullptr);
    EXPECT_EQ(pciIdentity(none), std::nullopt);
}

TEST(XHCIService, RecognisedByClassOrTextPropertiesCaseSensitively) {
    EXPECT_TRUE(isAppleXHCIService(NativeUSBNode("X", "", "AppleIntelCNLUSBXHCI", {}, nullptr)));
    EXPECT_FALSE(isAppleXHCIService(NativeUSBNode("X", "", "appleusbxhci", {}, nullptr)));
    EXPECT_TRUE(isAppleXHCIService(
        NativeUSBNode("X", "", "", {{"IOPersonalityPublisher", "a.AppleUSBXHCIPCI"}}, nullptr)));
    EXPECT_FALSE(isAppleXHCIService(
        NativeUSBNode("X", "", "", {{"IOClass", ByteBuffer{'U', 'S', 'B', 'X', 'H', 'C', 'I'}}}, nullptr)));
}

} // namespace
} // namespace korvane
