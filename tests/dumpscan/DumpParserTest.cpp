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
    // Ports of an XHC1 block at column 6 holding `ports`, as
    // "name number connector device" lines.
    std::string ports(const Dump& ports) {
        std::string text;
        for (const auto& controller :
             parseControllers(Dump().xhci(6, "XHC1@14000000").text() + ports.text(), ids.names())) {
            for (const auto& port : controller.ports) {
                text += port.name + " " + std::to_string(portNumber(port.portData).value_or(-1)) + " " +
                        std::to_string(port.connector) + " " + port.activeDevice + "\n";
            }
        }
        return text;
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

TEST_F(DumpParserTest, OnlyPortNodeLinesDeeperThanTheControllerMakePorts) {
    const std::pair<std::string, const char*> rows[] = {
        {"SSP1@14100000" + nodeTail("AppleUSBHostPort"), "SSP1"},
        {"RHUB@14000000" + nodeTail("AppleUSBXHCIPort"), "RHUB"},
        {"RHUB@14000000", ""}, // the loose expression has no RHUB
        {"hs01@14100000" + nodeTail("AppleUSB20XHCIPort"), "hs01"},
        {"HS123456@14100000" + nodeTail("AppleUSB20XHCIPort"), ""},
        {"AppleUSB20XHCIPort@01500000" + nodeTail("AppleUSB20XHCIPort"), ""},
        {"HS01" + nodeTail("AppleUSB20XHCIPort"), ""},
    };
    for (const auto& [line, name] : rows) {
        const auto found = ports(Dump().line(8, line));
        EXPECT_EQ(found.substr(0, found.find(' ')), name) << line;
    }
    EXPECT_EQ(ports(Dump().node(6, "HS01@14100000", "AppleUSB20XHCIPort")), "")
        << "not deeper than the controller";
}

TEST_F(DumpParserTest, NumbersComeFromThePortPropertyThenTheLocationThenTheName) {
    EXPECT_EQ(ports(Dump()
                        .node(8, "HS01@15100000", "AppleUSB20XHCIPort")
                        .property("\"port\" = <0a000000>")
                        .node(8, "HS02@14200000", "AppleUSB20XHCIPort")
                        .property("\"port\" = <0a>") // one byte is too short to count
                        .node(8, "SS03@14000000", "AppleUSB30XHCIPort")
                        .node(8, "HS04@15100000", "AppleUSB20XHCIPort")
                        .node(10, "Device@14100000", "IOUSBHostDevice")
                        .property("\"port\" = <09000000>") // a child's, not the port's own
                        .property("\"UsbConnector\" = 10")),
              "HS02 2 3 \n" // the base byte is the smallest first byte, 14
              "HS01 10 3 \n"
              "HS04 17 3 Device\n"
              "SS03 19 3 \n"); // its location gives 0, so the name counts
}

TEST_F(DumpParserTest, TheFirstLineOfANameWinsAndNestingPastTheLimitMakesNoPorts) {
    EXPECT_EQ(ports(Dump()
                        .node(8, "SS01@14500000", "AppleUSB30XHCIPort")
                        .node(10, "Hub@14500000", "AppleUSB30Hub")
                        .node(12, "HS01@14510000", "AppleUSB20XHCIPort")
                        .node(8, "HS01@14100000", "AppleUSB20XHCIPort")),
              "HS01 5 3 \nSS01 5 3 Hub\n");
    Dump deep;
    for (int level = 0; level < 40; ++level) {
        deep.node(8 + 2 * level, "HS" + std::to_string(100 + level) + "@14100000", "AppleUSB20XHCIPort");
    }
    const auto found = ports(deep);
    EXPECT_EQ(std::count(found.begin(), found.end(), '\n'), 32);
}

TEST_F(DumpParserTest, WithoutAStatedConnectorTheBlocksWordsDecide) {
    EXPECT_EQ(ports(Dump()
                        .node(8, "HS06@14200000", "AppleUSB20XHCIPort")
                        .property("\"Name\" = \"bluetooth module\"")
                        .node(8, "HS07@14300000", "AppleUSB20XHCIPort")
                        .property("\"Built-in\" = \"INTERNAL\"")),
              "HS06 2 255 Bluetooth\n" // the block mentions it, no device below
              "HS07 3 255 \n");
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
