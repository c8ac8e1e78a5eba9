#include "scanner/ControllerDiscovery.h"

#include <gtest/gtest.h>

namespace korvane {
namespace {

using B = ByteBuffer;

NativeUSBNode node(std::string className, PropertyDictionary properties) {
    return NativeUSBNode("X", "", std::move(className), std::move(properties), nullptr);
}

TEST(ControllerDiscovery, AnXHCIClassCodeQualifiesInEitherByteOrder) {
    const std::pair<PropertyValue, bool> rows[] = {
        {B{0x00, 0x30, 0x03, 0x0C}, true}, {B{0x30, 0x03, 0x0C, 0x00}, true},
        {std::int64_t{0x30030C00}, true},  {std::int64_t{0x0C033004}, true},
        {std::int64_t{0x7F0C0330}, true},  {"0x0c0330", true},
        {std::int64_t{0x0C0320}, false},   {B{0x00, 0x33, 0x0C, 0x00}, false}, // EHCI, and a near miss
    };
    for (const auto& [classCode, isController] : rows) {
        EXPECT_EQ(isUSBControllerPCIDevice(node("IOPCIDevice", {{"class-code", classCode}})), isController);
    }
    EXPECT_FALSE(isUSBControllerPCIDevice(node("IOService", {{"class-code", 0x0C0330}})));
}

TEST(ControllerDiscovery, IdentityTextsGoByTheFirstMatchOfEachExpression) {
    const std::pair<const char*, std::optional<PCIIdentity>> rows[] = {
        {"pci1b21,1242", PCIIdentity{0x1B21, 0x1242}},
        {"x PCI8086 A36D", PCIIdentity{0x8086, 0xA36D}},
        {"pci0000,0000 1033:0194", PCIIdentity{0x1033, 0x0194}},
        {"pci0000,0000 pci1033,0194", std::nullopt},
        {"PCI\\VEN 1022_149c", PCIIdentity{0x1022, 0x149C}},
        {"XHC1 14 IOPCIDevice", std::nullopt},
    };
    for (const auto& [text, identity] : rows) {
        EXPECT_EQ(parsePCIIdentity(text), identity) << text;
    }
}

TEST(ControllerDiscovery, ANodesIDsFallBackOnItsTextsWhenZeroOrMissing) {
    const B compatible{'p', 'c', 'i', '1', 'b', '2', '1', ',', '1', '2', '4', '2', 0};
    const std::pair<PropertyDictionary, std::optional<PCIIdentity>> rows[] = {
        {{{"vendor-id", B{0, 0, 0, 0}}, {"device-id", 0x1242}, {"compatible", compatible}},
         {{0x1B21, 0x1242}}},
        {{{"vendor-id", B{0x86, 0x80, 0, 0}}, {"device-id", B{0x6D, 0xA3, 0, 0}}}, {{0x8086, 0xA36D}}},
        {{}, std::nullopt},
    };
    for (const auto& [properties, identity] : rows) {
        EXPECT_EQ(pciIdentity(node("IOPCIDevice", properties)), identity);
    }
}

TEST(ControllerDiscovery, AHostServiceIsKnownByItsClassOrTextPropertiesCaseSensitively) {
    EXPECT_TRUE(isAppleXHCIService(node("AppleIntelCNLUSBXHCI", {})));
    EXPECT_FALSE(isAppleXHCIService(node("appleusbxhci", {})));
    EXPECT_TRUE(isAppleXHCIService(node("", {{"IOPersonalityPublisher", "a.AppleUSBXHCIPCI"}})));
    EXPECT_FALSE(isAppleXHCIService(node("", {{"IOClass", B{'U', 'S', 'B', 'X', 'H', 'C', 'I'}}})));
}

} // namespace
} // namespace korvane
