#include "DumpTestSupport.h"
#include "dumpscan/DumpParser.h"
#include "records/FileIO.h"

#include <gtest/gtest.h>

namespace korvane {
namespace {

using dumptest::nodeTail;

// A dump built node by node: `node` writes a node line at a column, `property`
// a property line that belongs to the node above it.
class Dump {
  public:
    Dump& node(int column, const std::string& nameAndLocation, const std::string& className) {
        text_ += std::string(static_cast<std::size_t>(column), ' ') + "+-o " + nameAndLocation +
                 nodeTail(className) + "\n";
        return *this;
    }
    Dump& property(const std::string& text) {
        text_ += "      | " + text + "\n";
        return *this;
    }
    // An xHCI PCI device with its IDs as bytes.
    Dump& pciController(int column, const std::string& nameAndLocation, const std::string& vendor,
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

class ControllerParserTest : public ::testing::Test {
  protected:
    std::vector<USBControllerMap> parse(const Dump& dump) {
        return parseControllers(dump.text(), names_.names());
    }
    dumptest::TinyNames names_;
};

TEST_F(ControllerParserTest, XhciNodeWithItsOwnIDsGivesAControllerWithPorts) {
    const auto controllers = parse(Dump()
                                       .node(2, "XHC1@14000000", "AppleUSBXHCISPT")
                                       .property("\"vendor-id\" = <86800000>")
                                       .property("\"device-id\" = <6da30000>")
                                       .node(4, "HS01@14100000", "AppleUSB20XHCIPort")
                                       .node(6, "Hub@14100000", "AppleUSB20Hub")
                                       .node(8, "HS03@14130000", "AppleUSB20HubPort"));
    ASSERT_EQ(controllers.size(), 1u);
    const auto& controller = controllers[0];
    EXPECT_EQ(controller.name, "XHC1");
    EXPECT_EQ(controller.location, "14000000");
    EXPECT_EQ(controller.vendorID, 0x8086);
    EXPECT_EQ(controller.deviceID, 0xa36d);
    EXPECT_EQ(controller.ioNameMatch, "pci8086,a36d");
    EXPECT_EQ(controller.providerClass, "AppleUSBXHCISPT");
    EXPECT_EQ(controller.usbDeviceName, names_.names().pciName(0x8086, 0xa36d));
    EXPECT_FALSE(controller.usbDeviceName.empty());
    ASSERT_EQ(controller.ports.size(), 2u); // ports below hubs count too
    EXPECT_EQ(controller.ports[0].name, "HS01");
    EXPECT_EQ(controller.ports[1].name, "HS03");
}

TEST_F(ControllerParserTest, IDsBelowTheFirstChildDontCountAndThePCIParentStepsIn) {
    const auto controllers = parse(Dump()
                                       .pciController(2, "XHC1@14", "86800000", "6da30000")
                                       .node(4, "XHC1@14000000", "AppleUSBXHCISPT")
                                       .node(6, "HS01@14100000", "AppleUSB20XHCIPort")
                                       .property("\"vendor-id\" = <86800000>")
                                       .property("\"device-id\" = <6da30000>"));
    ASSERT_EQ(controllers.size(), 1u);
    EXPECT_EQ(controllers[0].location, "14");
    EXPECT_EQ(controllers[0].providerClass, "");
    EXPECT_TRUE(controllers[0].ports.empty());
}

TEST_F(ControllerParserTest, SecondIDKeysAreRead) {
    const auto controllers = parse(Dump()
                                       .node(2, "XHC1@14000000", "AppleUSBXHCI")
                                       .property("\"idVendor\" = <86 80>")
                                       .property("\"idProduct\" = <6d a3>"));
    ASSERT_EQ(controllers.size(), 1u);
    EXPECT_EQ(controllers[0].vendorID, 0x8086);
}

TEST_F(ControllerParserTest, PlainNumberIDsGiveNothing) {
    EXPECT_TRUE(parse(Dump()
                          .node(2, "XHC1@14000000", "AppleUSBXHCI")
                          .property("\"vendor-id\" = 32902")
                          .property("\"device-id\" = 41837"))
                    .empty());
}

TEST_F(ControllerParserTest, ThePCIParentIsMergedAwayByIDsWhateverTheLocation) {
    const auto controllers = parse(Dump()
                                       .pciController(2, "XHC1@14", "86800000", "6da30000")
                                       .node(4, "XHC1@14000000", "AppleUSBXHCISPT")
                                       .property("\"vendor-id\" = <86800000>")
                                       .property("\"device-id\" = <6da30000>")
                                       .node(6, "HS01@14100000", "AppleUSB20XHCIPort")
                                       .pciController(2, "XHC9@1D", "86800000", "6da30000"));
    ASSERT_EQ(controllers.size(), 1u);
    EXPECT_EQ(controllers[0].providerClass, "AppleUSBXHCISPT");
    EXPECT_EQ(controllers[0].ports.size(), 1u);
}

TEST_F(ControllerParserTest, PCINodesQualifyByClassCodeAndTheFirstOfEqualIDsWins) {
    const auto controllers = parse(Dump()
                                       .pciController(2, "EHC1@1D", "86800000", "26a30000", "20030c00")
                                       .pciController(2, "SHORT@1E", "86800000", "27a30000", "300")
                                       .pciController(2, "XHC2@1C,4", "211b0000", "42120000", "30 03 0c 00")
                                       .pciController(2, "XHC3@1C,5", "211b0000", "42120000"));
    ASSERT_EQ(controllers.size(), 1u);
    EXPECT_EQ(controllers[0].name, "XHC2");
    EXPECT_EQ(controllers[0].location, "1C,4");
    EXPECT_EQ(controllers[0].usbDeviceName, names_.names().usbName(0x1b21, 0x1242));
    EXPECT_FALSE(controllers[0].usbDeviceName.empty());
}

TEST_F(ControllerParserTest, NodesBelowAMatchedBlockAreNotLookedAt) {
    // A bridge is a PCI node of its own: the controller behind it is never reached.
    EXPECT_TRUE(parse(Dump()
                          .node(2, "RP05@1C,4", "IOPCIDevice")
                          .property("\"class-code\" = <00040600>")
                          .pciController(4, "XHC2@0", "86800000", "ec150000"))
                    .empty());
    // Nor is an xHCI node below another one.
    const auto nested = parse(Dump()
                                  .node(2, "XHC1@14000000", "AppleUSBXHCI")
                                  .node(4, "XHC2@15000000", "AppleUSBXHCI")
                                  .property("\"vendor-id\" = <86800000>")
                                  .property("\"device-id\" = <6da30000>"));
    EXPECT_TRUE(nested.empty());
}

TEST_F(ControllerParserTest, SortedByVendorDeviceLocationThenName) {
    const auto controllers = parse(Dump()
                                       .node(2, "XHCB@14000000", "AppleUSBXHCI")
                                       .property("\"vendor-id\" = <86800000>")
                                       .property("\"device-id\" = <6da30000>")
                                       .node(2, "XHCA@14000000", "AppleUSBXHCI")
                                       .property("\"vendor-id\" = <86800000>")
                                       .property("\"device-id\" = <6da30000>")
                                       .node(2, "XHC1@10000000", "AppleUSBXHCI")
                                       .property("\"vendor-id\" = <86800000>")
                                       .property("\"device-id\" = <6da30000>")
                                       .node(2, "XHC1@2000000", "AppleUSBXHCI")
                                       .property("\"vendor-id\" = <86800000>")
                                       .property("\"device-id\" = <6da30000>")
                                       .node(2, "XHC0@99000000", "AppleUSBXHCI")
                                       .property("\"vendor-id\" = <22100000>")
                                       .property("\"device-id\" = <9c140000>"));
    std::vector<std::string> order;
    for (const auto& controller : controllers) {
        order.push_back(controller.name + "@" + controller.location);
    }
    EXPECT_EQ(order, (std::vector<std::string>{"XHC0@99000000", "XHC1@2000000", "XHC1@10000000",
                                               "XHCA@14000000", "XHCB@14000000"}));
}

TEST_F(ControllerParserTest, UpperCaseMarkerMatchesButCountsAsDeepest) {
    // The expressions take "+-O"; the depth rule wants the exact "+-o", so the
    // line is deepest of all and the next node line, the port, ends its block.
    std::string text = "+-O XHC1@14000000" + nodeTail("AppleUSBXHCI") + "\n";
    text += Dump()
                .property("\"vendor-id\" = <86800000>")
                .property("\"device-id\" = <6da30000>")
                .node(4, "HS01@14100000", "AppleUSB20XHCIPort")
                .text();
    const auto controllers = parseControllers(text, names_.names());
    ASSERT_EQ(controllers.size(), 1u);
    EXPECT_EQ(controllers[0].vendorID, 0x8086);
    EXPECT_TRUE(controllers[0].ports.empty());
}

TEST_F(ControllerParserTest, TextWithoutNodeLinesGivesNothing) {
    EXPECT_TRUE(parseControllers("", names_.names()).empty());
    EXPECT_TRUE(
        parseControllers("<key>vendor-id</key><data>hoAAAA==</data> AppleUSBXHCI IOPCIDevice", names_.names())
            .empty());
}

TEST_F(ControllerParserTest, HandMadeDumpGivesBothKindsOfController) {
    const auto bytes = readFileBytes(dumptest::dataFile("dumpscan/handmade-every-port-branch.txt"));
    if (!bytes) {
        GTEST_SKIP() << "tests/data/dumpscan/handmade-every-port-branch.txt is missing";
    }
    const auto controllers = parseControllers(*bytes, names_.names());
    ASSERT_EQ(controllers.size(), 2u);
    EXPECT_EQ(controllers[0].stableID(), "1b21:1242|XHC2|1C,4|pci1b21,1242");
    EXPECT_TRUE(controllers[0].ports.empty());
    EXPECT_EQ(controllers[1].stableID(), "8086:a36d|XHC1|14000000|pci8086,a36d");
    EXPECT_EQ(controllers[1].ports.size(), 10u);
}

} // namespace
} // namespace korvane
