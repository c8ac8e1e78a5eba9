#include "dumpscan/DumpParser.h"

#include "support/Golden.h"
#include "support/IDsHome.h"
#include "support/ScanText.h"

#include <gtest/gtest.h>

namespace korvane {
namespace {

// ioreg's node line tail; the parsers ignore everything behind the class name.
std::string nodeTail(const std::string& className) {
    return "  <class " + className +
           ", id 0x100000200, registered, matched, active, busy 0 (0 ms), retain 9>";
}

// A dump written line by line, in the layout `ioreg -l -w0` prints.
class Dump {
  public:
    Dump& node(int column, const std::string& nameAndLocation, const std::string& className) {
        text_ += std::string(static_cast<std::size_t>(column), ' ') + "+-o " + nameAndLocation +
                 nodeTail(className) + "\n";
        return *this;
    }
    Dump& line(int column, const std::string& text) {
        text_ += std::string(static_cast<std::size_t>(column), ' ') + "+-o " + text + "\n";
        return *this;
    }
    Dump& property(const std::string& text) {
        text_ += "      | " + text + "\n";
        return *this;
    }
    // An xHCI node with its own IDs, as no real dump has but the parser reads.
    Dump& xhci(int column, const std::string& nameAndLocation, const std::string& vendor = "86800000",
               const std::string& device = "6da30000") {
        return node(column, nameAndLocation, "AppleUSBXHCISPT")
            .property("\"vendor-id\" = <" + vendor + ">")
            .property("\"device-id\" = <" + device + ">");
    }
    Dump& pci(int column, const std::string& nameAndLocation, const std::string& vendor,
              const std::string& device, const std::string& classCode = "30030c00") {
        return node(column, nameAndLocation, "IOPCIDevice")
            .property("\"class-code\" = <" + classCode + ">")
            .property("\"vendor-id\" = <" + vendor + ">")
            .property("\"device-id\" = <" + device + ">");
    }
    const std::string& text() const { return text_; }

  private:
    std::string text_;
};

class DumpParserTest : public ::testing::Test {
  protected:
    // Controllers as "name@location class: ports" lines.
    std::string controllers(const std::string& text) {
        std::string result;
        for (const auto& controller : parseControllers(text, ids.names())) {
            result += controller.name + "@" + controller.location + " " + controller.providerClass + ":";
            for (const auto& port : controller.ports) {
                result += " " + port.name;
            }
            result += "\n";
        }
        return result;
    }
    IDsHome ids;
};

TEST_F(DumpParserTest, DriverNodesWithIDsComeFirstThenPCINodesOfUnseenIDsWithoutPorts) {
    EXPECT_EQ(controllers(Dump()
                              .pci(2, "XHC1@14", "86800000", "6da30000") // merged away by its IDs
                              .xhci(4, "XHC1@14000000")
                              .node(6, "HS01@14100000", "AppleUSB20XHCIPort")
                              .node(8, "Hub@14100000", "AppleUSB20Hub")
                              .node(10, "HS03@14130000", "AppleUSB20HubPort") // hub ports count too
                              .pci(2, "EHC1@1D", "86800000", "26a30000", "20030c00")
                              .pci(2, "XHC2@1C,4", "211b0000", "42120000", "30 03 0c 00")
                              .pci(2, "XHC3@1C,5", "211b0000", "42120000")
                              .text()),
              "XHC2@1C,4 :\nXHC1@14000000 AppleUSBXHCISPT: HS01 HS03\n");
    EXPECT_EQ(controllers(Dump()
                              .pci(2, "XHC1@14", "86800000", "6da30000")
                              .node(4, "XHC1@14000000", "AppleUSBXHCISPT")
                              .node(6, "HS01@14100000", "AppleUSB20XHCIPort")
                              .property("\"vendor-id\" = <86800000>")
                              .property("\"device-id\" = <6da30000>")
                              .text()),
              "XHC1@14 :\n")
        << "IDs below the driver node's first child are not its own; its PCI parent steps in";
}

TEST_F(DumpParserTest, NodesBelowAMatchedBlockAreNeverLookedAt) {
    EXPECT_EQ(controllers(Dump()
                              .node(2, "RP05@1C,4", "IOPCIDevice")
                              .property("\"class-code\" = <00040600>")
                              .pci(4, "XHC2@0", "86800000", "ec150000")
                              .text()),
              "")
        << "a bridge is a PCI node of its own";
    EXPECT_EQ(controllers(Dump().node(2, "XHC1@14000000", "AppleUSBXHCI").xhci(4, "XHC2@15000000").text()),
              "");
    EXPECT_EQ(controllers(Dump()
                              .node(2, "XHC1@14000000", "AppleUSBXHCI")
                              .property("\"vendor-id\" = 32902")
                              .property("\"device-id\" = 41837")
                              .text()),
              "")
        << "IDs as plain numbers are no IDs";
}

TEST_F(DumpParserTest, ControllersSortByVendorDeviceLocationAsNumbersThenName) {
    EXPECT_EQ(
        controllers(Dump()
                        .xhci(2, "XHCB@14000000")
                        .xhci(2, "XHCA@14000000")
                        .xhci(2, "XHC1@10000000")
                        .xhci(2, "XHC1@2000000")
                        .xhci(2, "XHC0@99000000", "22100000", "9c140000")
                        .text()),
        "XHC0@99000000 AppleUSBXHCISPT:\nXHC1@2000000 AppleUSBXHCISPT:\nXHC1@10000000 AppleUSBXHCISPT:\n"
        "XHCA@14000000 AppleUSBXHCISPT:\nXHCB@14000000 AppleUSBXHCISPT:\n");
}

TEST_F(DumpParserTest, AnUpperCaseMarkerMatchesButCountsAsDeepest) {
    // The expressions take "+-O"; the depth rule wants the exact "+-o", so the
    // line is deepest of all and the next node line, the port, ends its block.
    std::string text = "+-O XHC1@14000000" + nodeTail("AppleUSBXHCI") + "\n";
    text += Dump()
                .property("\"vendor-id\" = <86800000>")
                .property("\"device-id\" = <6da30000>")
                .node(4, "HS01@14100000", "AppleUSB20XHCIPort")
                .text();
    EXPECT_EQ(controllers(text), "XHC1@14000000 AppleUSBXHCI:\n");
    EXPECT_EQ(controllers("<key>vendor-id</key><data>hoAAAA==</data> AppleUSBXHCI IOPCIDevice"), "");
}

TEST_F(DumpParserTest, NestingPastTheLimitMakesNoPorts) {
    Dump deep;
    deep.xhci(6, "XHC1@14000000");
    for (int level = 0; level < 40; ++level) {
        deep.node(8 + 2 * level, "HS" + std::to_string(100 + level) + "@14100000", "AppleUSB20XHCIPort");
    }
    const auto found = controllers(deep.text());
    EXPECT_EQ(std::count(found.begin(), found.end(), ' '), 1 + 32);
}

TEST_F(DumpParserTest, TheHandMadeDumpGoesThroughEveryPortBranch) {
    EXPECT_TRUE(matchesGolden(
        scanText(parseControllers(testDataBytes("dumpscan/handmade-every-port-branch.txt"), ids.names())),
        "line-scanner/handmade-every-port-branch.txt"));
}

TEST_F(DumpParserTest, TheIMac19_1DumpParsedAsRawBytesGivesItsPCIController) {
    // As text it is empty (one Mac Roman byte); see the corpus golden file.
    EXPECT_EQ(controllers(testDataBytes("macos/iMac19-1/IOReg.txt")), "XHC1@14 :\n");
}

} // namespace
} // namespace korvane
