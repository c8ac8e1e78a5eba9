#include "savedregistry/IORegTextParser.h"

#include "records/FileIO.h"
#include "scanner/PropertyReaders.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <string>

namespace korvane {
namespace {

const NativeUSBNode* findNode(const NativeUSBNode& root, std::string_view name,
                              std::string_view className = {}) {
    for (const auto* node : flatten(root)) {
        if (node->name == name && (className.empty() || node->className == className)) {
            return node;
        }
    }
    return nullptr;
}

std::vector<std::string> childNames(const NativeUSBNode& node) {
    std::vector<std::string> names;
    for (const auto& child : node.children) {
        names.push_back(child->name);
    }
    return names;
}

TEST(IORegTextParser, BuildsTheTreeFromIndentCells) {
    const auto root = parseIORegText(
        "+-o Root  <class IORegistryEntry, id 0x100000100, retain 19>\n"
        "  +-o MacPro7,1  <class IOPlatformExpertDevice, id 0x1, registered, matched, active, busy 0 (48 "
        "ms), retain 44>\n"
        "    +-o A  <class AClass, id 0x2, !registered, !matched, active, busy 0, retain 4>\n"
        "    | +-o A1@1  <class A1Class, id 0x3, registered, matched, inactive, busy 0 (0 ms), retain 4>\n"
        "    | | +-o A11  <class X, id 0x5, retain count 3>\n"
        "    | +-o A2@2,3  <class A2Class, id 0x6, retain 4>\n"
        "    +-o B  <class BClass, id 0x4, retain 5>\n");
    ASSERT_TRUE(root);
    EXPECT_EQ(root->name, "Root");
    EXPECT_EQ(root->className, "IORegistryEntry");
    EXPECT_EQ(root->parent, nullptr);
    ASSERT_EQ(childNames(*root), std::vector<std::string>{"MacPro7,1"});
    const auto& platform = *root->children[0];
    EXPECT_EQ(childNames(platform), (std::vector<std::string>{"A", "B"}));
    const auto& a = *platform.children[0];
    EXPECT_EQ(childNames(a), (std::vector<std::string>{"A1", "A2"}));
    EXPECT_EQ(childNames(*a.children[0]), std::vector<std::string>{"A11"});
    EXPECT_EQ(a.children[0]->location, "1");
    EXPECT_EQ(a.children[1]->location, "2,3");
    EXPECT_EQ(a.children[1]->className, "A2Class");
    EXPECT_EQ(a.children[0]->children[0]->className, "X");
    EXPECT_EQ(platform.children[1]->className, "BClass");
    for (const auto* node : flatten(*root)) {
        for (const auto& child : node->children) {
            EXPECT_EQ(child->parent, node);
        }
    }
}

TEST(IORegTextParser, NodeLineNameAndLocationStandInOnlyWhereThePropertiesHaveNone) {
    const auto root = parseIORegText(R"(+-o Root  <class IORegistryEntry, id 0x100000100, retain 19>
  +-o XHC1@14  <class IOPCIDevice, id 0x10000024d, registered, matched, active, busy 0 (420 ms), retain 12>
  | {
  |   "name" = <"pci8086,a36d">
  |   "vendor-id" = <86800000>
  | }
  | 
  +-o PXSX@0  <class IOPCIDevice, id 0x10000024e, registered, matched, active, busy 0 (420 ms), retain 12>
  | {
  |   "IOName" = "pci1b73,1100"
  |   "location" = "ab"
  | }
  | 
  +-o AppleUSBXHCI  <class AppleUSBXHCI, id 0x10000024f, registered, matched, active, busy 0 (1 ms), retain 9>
    +-o XHCI Root Hub SS Simulation@14  <class IOUSBRootHubDevice, id 0x100000250, retain 9>
)");
    ASSERT_TRUE(root);
    const auto* xhc = findNode(*root, "XHC1");
    ASSERT_TRUE(xhc);
    EXPECT_EQ(xhc->location, "14");
    EXPECT_EQ(xhc->properties.count("IOName"), 0U) << "stand-ins never become properties";
    EXPECT_EQ(xhc->properties.count("location"), 0U);
    EXPECT_EQ(xhc->properties.count("vendor-id"), 1U);

    const auto* pxsx = findNode(*root, "pci1b73,1100");
    ASSERT_TRUE(pxsx) << "an IOName property of its own wins over the node line";
    EXPECT_EQ(pxsx->location, "AB");

    const auto* xhci = findNode(*root, "AppleUSBXHCI", "AppleUSBXHCI");
    ASSERT_TRUE(xhci);
    EXPECT_EQ(xhci->location, "");
    ASSERT_EQ(xhci->children.size(), 1U);
    EXPECT_EQ(xhci->children[0]->name, "XHCI Root Hub SS Simulation");
    EXPECT_EQ(xhci->children[0]->location, "14");
}

TEST(IORegTextParser, ABrokenValueLosesOnlyItsProperty) {
    const auto root = parseIORegText("+-o Root  <class IORegistryEntry, id 0x1, retain 19>\n"
                                     "  +-o N  <class C, id 0x2, retain 3>\n"
                                     "    {\n"
                                     "      \"good\" = 1\n"
                                     "      \"broken\" = {\"a\"=\n"
                                     "      \"empty\" = \n"
                                     "      \"bad utf8\" = \"experience\xD5s iMac\"\n"
                                     "      \"bad \xD5 key\" = 2\n"
                                     "      \"also\" = \"x\"\n"
                                     "    }\n"
                                     "    \n");
    ASSERT_TRUE(root);
    ASSERT_EQ(root->children.size(), 1U);
    const PropertyDictionary expected{{"good", 1}, {"also", "x"}};
    EXPECT_EQ(root->children[0]->properties, expected);
}

TEST(IORegTextParser, JoinsTextValuesThatRunOverSeveralLines) {
    const auto root = parseIORegText("+-o Root  <class IORegistryEntry, id 0x1, retain 19>\r\n"
                                     "  | {\r\n"
                                     "  |   \"CLMVersion\" = \"API: 18.1\r\n"
                                     "Data: Oly.Maui\r\n"
                                     "\"\r\n"
                                     "  |   \"next\" = Yes\r\n"
                                     "  | }\r\n");
    ASSERT_TRUE(root);
    const PropertyDictionary expected{{"CLMVersion", "API: 18.1\nData: Oly.Maui\n"}, {"next", 1}};
    EXPECT_EQ(root->properties, expected);
}

TEST(IORegTextParser, NodeLinesWithoutPropertiesStillGiveTheTree) {
    const auto root = parseIORegText(
        "+-o Root  <class IORegistryEntry, id 0x100000100, retain 9>\n"
        "  +-o S08@1  <class IOPCIDevice, id 0x1000001e9, registered, matched, active, busy 0 (46 ms), "
        "retain 14>\n"
        "    +-o S08@01000000  <class AppleUSBXHCIPCI, id 0x1000002b3, registered, matched, active, busy 0 "
        "(24 ms), "
        "retain 37>\n"
        "      +-o AppleUSB20XHCIPort@01500000  <class AppleUSB20XHCIPort, id 0x1000002bb, retain 13>\n");
    ASSERT_TRUE(root);
    const auto* port = findNode(*root, "AppleUSB20XHCIPort");
    ASSERT_TRUE(port);
    EXPECT_EQ(port->location, "01500000");
    EXPECT_TRUE(port->properties.empty());
    EXPECT_EQ(port->parent->name, "S08");
    EXPECT_EQ(port->parent->location, "01000000");
}

TEST(IORegTextParser, GathersSeveralTopLevelEntriesUnderAnUnnamedRoot) {
    const auto root = parseIORegText("+-o A  <class CA, id 0x1, retain 1>\n"
                                     "+-o B  <class CB, id 0x2, retain 1>\n");
    ASSERT_TRUE(root);
    EXPECT_EQ(root->name, "");
    EXPECT_EQ(root->className, "");
    EXPECT_EQ(childNames(*root), (std::vector<std::string>{"A", "B"}));
    EXPECT_EQ(root->children[1]->parent, root.get());
}

TEST(IORegTextParser, MalformedDepthsNeitherLoseNodesNorRecurseWithoutBound) {
    std::string text = "+-o Root  <class R, id 0x1, retain 1>\n"
                       "          +-o Jump  <class J, id 0x2, retain 1>\n";
    for (int depth = 0; depth < 400; ++depth) {
        text += std::string(2 * depth + 2, ' ') + "+-o D" + std::to_string(depth) +
                "  <class D, id 0x3, retain 1>\n";
    }
    const auto root = parseIORegText(text);
    ASSERT_TRUE(root);
    EXPECT_EQ(root->name, "Root");
    EXPECT_EQ(root->children.front()->name, "Jump")
        << "a line too deep for its predecessor hangs under the deepest node";
    std::size_t deepest = 0;
    for (const auto* node : flatten(*root)) {
        std::size_t depth = 0;
        for (const auto* up = node->parent; up; up = up->parent) {
            ++depth;
        }
        deepest = std::max(deepest, depth);
    }
    EXPECT_LT(deepest, 256U);
}

TEST(IORegTextParser, TextWithoutNodeLinesGivesNoTree) {
    EXPECT_EQ(parseIORegText(""), nullptr);
    EXPECT_EQ(parseIORegText("hello\nworld\n  | {\n  |   \"a\" = 1\n"), nullptr);
    EXPECT_FALSE(looksLikeIORegText("a +-o b\n"));
    EXPECT_TRUE(looksLikeIORegText("header\n  | +-o b\n"));
}

std::filesystem::path macosData(const char* relative) {
    return std::filesystem::path(KORVANE_TEST_DATA_DIR) / "macos" / relative;
}

struct DumpCase {
    const char* name;
    friend void PrintTo(const DumpCase& row, std::ostream* out) { *out << row.name; }
    const char* file;
    std::size_t nodeLines;
};

class IORegTextCorpusTest : public testing::TestWithParam<DumpCase> {};

TEST_P(IORegTextCorpusTest, EveryNodeLineBecomesANode) {
    const auto bytes = readFileBytes(macosData(GetParam().file));
    if (!bytes) {
        GTEST_SKIP() << "fixture missing: " << GetParam().file;
    }
    const auto root = parseIORegText(*bytes);
    ASSERT_TRUE(root);
    EXPECT_EQ(root->name, "Root");
    EXPECT_EQ(flatten(*root).size(), GetParam().nodeLines);
}

const DumpCase kDumps[] = {
    {"iMac19_1", "iMac19-1/IOReg.txt", 747},
    {"MacBookPro15_2", "MacBookPro15-2/IOReg.txt", 1016},
    {"MacPro6_1", "MacPro6-1/IOReg.txt", 1509},
    {"Macmini7_1", "Macmini7-1/IOReg.txt", 487},
    {"iMacPro1_1", "iMacPro1-1/IOReg.txt", 986},
    {"HackintoshServicePlane", "hackintosh-CML/ioreg_ioservice.txt", 1193},
    {"HackintoshUSBPlane", "hackintosh-CML/ioreg_IOUSB-plane.txt", 11},
    {"QemuWithoutProperties", "qemu-MacPro7-1/ioreg.txt", 353},
};

INSTANTIATE_TEST_SUITE_P(Dumps, IORegTextCorpusTest, testing::ValuesIn(kDumps),
                         [](const testing::TestParamInfo<DumpCase>& row) { return row.param.name; });

TEST(IORegTextCorpus, TheStrayMacRomanByteOfTheIMac19_1LosesOnlyItsValue) {
    const auto bytes = readFileBytes(macosData("iMac19-1/IOReg.txt"));
    if (!bytes) {
        GTEST_SKIP() << "fixture missing: iMac19-1/IOReg.txt";
    }
    const auto root = parseIORegText(*bytes);
    ASSERT_TRUE(root);
    const auto* bluetooth = findNode(*root, "IOBluetoothHCIController", "IOBluetoothHCIController");
    ASSERT_TRUE(bluetooth);
    EXPECT_EQ(bluetooth->properties.count("BluetoothLocalName"), 0U);
    const PropertyValue address("38-F9-D3-84-E8-46");
    EXPECT_EQ(bluetooth->properties.at("BluetoothDeviceAddress"), address);
    EXPECT_EQ(bluetooth->properties.at("TransportType"), PropertyValue("UART"));
    EXPECT_EQ(bluetooth->properties.at("HCIRevision"), PropertyValue(4392));
}

TEST(IORegTextCorpus, MultiLineAndQuotedTextsOfTheMacBookPro15_2) {
    const auto bytes = readFileBytes(macosData("MacBookPro15-2/IOReg.txt"));
    if (!bytes) {
        GTEST_SKIP() << "fixture missing: MacBookPro15-2/IOReg.txt";
    }
    const auto root = parseIORegText(*bytes);
    ASSERT_TRUE(root);
    const auto* wlan = findNode(*root, "AppleBCMWLANCore", "AppleBCMWLANCore");
    ASSERT_TRUE(wlan);
    const auto* tag = wlan->properties.at("AppleBCMWLAN.BuildTagGit").text();
    ASSERT_TRUE(tag);
    EXPECT_EQ(*tag, "\"AppleBCMWLANV3-445.4\"");
    const auto* txCap = wlan->properties.at("TxCapVersion").text();
    ASSERT_TRUE(txCap);
    EXPECT_TRUE(
        txCap->starts_with("Data Title: Maui_SDBPowerCap_Final_25May2018_v3.0\nData Creation: 2019-12-06"));
    EXPECT_TRUE(txCap->ends_with("\n"));
    EXPECT_EQ(wlan->properties.at("IOReportLegendPublic"), PropertyValue(1));
}

} // namespace
} // namespace korvane
