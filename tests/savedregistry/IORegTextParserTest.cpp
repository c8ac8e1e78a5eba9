#include "savedregistry/IORegTextParser.h"

#include "scanner/PropertyReaders.h"
#include "support/RegistryTrees.h"

#include <gtest/gtest.h>

namespace korvane {
namespace {

TEST(IORegTextParser, BuildsTheTreeFromIndentCellsAndGathersSeveralRoots) {
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
    EXPECT_EQ(treeText(*root), "Root <IORegistryEntry>\n"
                               "  MacPro7,1 <IOPlatformExpertDevice>\n"
                               "    A <AClass>\n"
                               "      A1@1 <A1Class>\n"
                               "        A11 <X>\n"
                               "      A2@2,3 <A2Class>\n"
                               "    B <BClass>\n");

    const auto several =
        parseIORegText("+-o A  <class CA, id 0x1, retain 1>\n+-o B  <class CB, id 0x2, retain 1>\n");
    ASSERT_TRUE(several);
    EXPECT_EQ(treeText(*several), " <>\n  A <CA>\n  B <CB>\n");
}

TEST(IORegTextParser, TheNodeLinesLocationStandsInOnlyForAnEntryPrintedWithoutProperties) {
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
    // As the live registry reads it: a PCI device's properties hold no
    // location, so two controllers "@0" behind two bridges don't share one.
    EXPECT_EQ(treeText(*root), "Root <IORegistryEntry>\n"
                               "  XHC1 <IOPCIDevice>\n"
                               "  pci1b73,1100@AB <IOPCIDevice>\n" // its own IOName and location win
                               "  AppleUSBXHCI <AppleUSBXHCI>\n"
                               "    XHCI Root Hub SS Simulation@14 <IOUSBRootHubDevice>\n");
    EXPECT_EQ(root->children[0]->properties.dictionary().size(), 2U) << "stand-ins never become properties";
}

TEST(IORegTextParser, ABrokenValueLosesOnlyItsPropertyAndTextsRunOverLines) {
    const auto root = parseIORegText("+-o Root  <class IORegistryEntry, id 0x1, retain 19>\r\n"
                                     "    {\r\n"
                                     "      \"good\" = 1\r\n"
                                     "      \"broken\" = {\"a\"=\r\n"
                                     "      \"empty\" = \r\n"
                                     "      \"bad utf8\" = \"experience\xD5s iMac\"\r\n"
                                     "      \"bad \xD5 key\" = 2\r\n"
                                     "      \"CLMVersion\" = \"API: 18.1\r\n"
                                     "   +-o Data: Oly.Maui\r\n"
                                     "\"\r\n"
                                     "      \"next\" = Yes\r\n"
                                     "      \"good\" = (1,\r\n"
                                     "      \"next\" = No\r\n"
                                     "    }\r\n");
    ASSERT_TRUE(root);
    // Of a key given twice the last readable value counts, whether the values
    // are read one by one, as a scan does, or all at once.
    const PropertyDictionary expected{
        {"good", 1}, {"CLMVersion", "API: 18.1\n   +-o Data: Oly.Maui\n"}, {"next", 0}};
    EXPECT_EQ(root->properties.dictionary(), expected);
    for (const auto& [key, value] : expected) {
        EXPECT_EQ(root->properties.value(key), value) << key;
    }
    EXPECT_FALSE(root->properties.contains("broken"));
}

TEST(IORegTextParser, MalformedDepthsHangUnderTheDeepestNodeAndNestWithinTheBound) {
    std::string text = "+-o Root  <class R, id 0x1, retain 1>\n"
                       "          +-o Jump  <class J, id 0x2, retain 1>\n";
    for (int depth = 0; depth < 400; ++depth) {
        text += std::string(2 * depth + 2, ' ') + "+-o D" + std::to_string(depth) +
                "  <class D, id 0x3, retain 1>\n";
    }
    const auto root = parseIORegText(text);
    ASSERT_TRUE(root);
    EXPECT_EQ(root->children.front()->name, "Jump")
        << "a line too deep for its predecessor hangs under the deepest";
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

} // namespace
} // namespace korvane
