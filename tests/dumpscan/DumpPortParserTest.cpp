#include "DumpTestSupport.h"
#include "dumpscan/DumpParser.h"
#include "records/FileIO.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sstream>

namespace korvane {
namespace {

using dumptest::nodeTail;

// A controller block at depth 6, built line by line; ports at column 8.
class Block {
  public:
    Block() { add(6, "XHC1@14000000" + nodeTail("AppleUSBXHCISPT")); }
    Block& add(int column, const std::string& text) {
        text_ += std::string(static_cast<std::size_t>(column), ' ') + "+-o " + text + "\n";
        return *this;
    }
    Block& property(const std::string& text) {
        text_ += "              " + text + "\n";
        return *this;
    }
    std::vector<USBPortMap> ports() const {
        const DumpLines lines(text_);
        return parsePorts(lines, 0, lines.size(), 6);
    }

  private:
    std::string text_;
};

std::vector<std::string> names(const std::vector<USBPortMap>& ports) {
    std::vector<std::string> result;
    for (const auto& port : ports) {
        result.push_back(port.name);
    }
    return result;
}

struct LineCase {
    std::string name;
    std::string line;
    std::vector<std::string> portNames;
};

class PortLineTest : public ::testing::TestWithParam<LineCase> {};

TEST_P(PortLineTest, OnlyPortNodeLinesMakePorts) {
    EXPECT_EQ(names(Block().add(8, GetParam().line).ports()), GetParam().portNames);
}

INSTANTIATE_TEST_SUITE_P(
    Ports, PortLineTest,
    ::testing::Values(
        LineCase{"StrictWithPortClass", "HS01@14100000" + nodeTail("AppleUSB20XHCIPort"), {"HS01"}},
        LineCase{"StrictWithHostPortClass", "SSP1@14100000" + nodeTail("AppleUSBHostPort"), {"SSP1"}},
        LineCase{"RhubOnlyThroughTheStrictPattern", "RHUB@14000000" + nodeTail("AppleUSBXHCIPort"), {"RHUB"}},
        LineCase{"RhubWithoutClassIsNoPort", "RHUB@14000000", {}},
        LineCase{"LooseWithoutClass", "HS01@14100000", {"HS01"}},
        LineCase{"LooseWithOtherClass", "PRT1@14100000" + nodeTail("AppleUSB20HubPort"), {"PRT1"}},
        LineCase{"NamesKeepTheirCase", "hs01@14100000" + nodeTail("AppleUSB20XHCIPort"), {"hs01"}},
        LineCase{
            "SixCharactersBehindThePrefixIsNoPort", "HS123456@14100000" + nodeTail("AppleUSB20XHCIPort"), {}},
        LineCase{
            "ClassNamedPortIsNoPort", "AppleUSB20XHCIPort@01500000" + nodeTail("AppleUSB20XHCIPort"), {}},
        LineCase{"DeviceIsNoPort", "Keyboard@14100000" + nodeTail("IOUSBHostDevice"), {}},
        LineCase{"NoLocationIsNoPort", "HS01" + nodeTail("AppleUSB20XHCIPort"), {}}),
    [](const ::testing::TestParamInfo<LineCase>& row) { return row.param.name; });

TEST(ParsePorts, APortLineNotDeeperThanTheControllerIsPassedOver) {
    EXPECT_TRUE(Block().add(6, "HS01@14100000" + nodeTail("AppleUSB20XHCIPort")).ports().empty());
    EXPECT_TRUE(Block().add(4, "HS01@14100000" + nodeTail("AppleUSB20XHCIPort")).ports().empty());
}

TEST(ParsePorts, NumbersComeFromPropertyThenLocationThenName) {
    const auto ports = Block()
                           .add(8, "HS01@14100000" + nodeTail("AppleUSB20XHCIPort"))
                           .property("\"port\" = <0a000000>")
                           .add(8, "HS02@14200000" + nodeTail("AppleUSB20XHCIPort"))
                           .property("\"port\" = <0a>")
                           .add(8, "SS03@14000000" + nodeTail("AppleUSB30XHCIPort"))
                           .ports();
    ASSERT_EQ(ports.size(), 3u);
    EXPECT_EQ(ports[0].name, "HS02");
    EXPECT_EQ(ports[0].portData, portData(2)); // one byte is too short to count
    EXPECT_EQ(ports[1].name, "HS01");
    EXPECT_EQ(ports[1].portData, portData(10));
    EXPECT_EQ(ports[2].name, "SS03");
    EXPECT_EQ(ports[2].portData, portData(19)); // location gives 0, so the name counts
}

TEST(ParsePorts, BaseByteIsTheSmallestFirstByteOfTheBlock) {
    const auto ports = Block()
                           .add(8, "HS01@15100000" + nodeTail("AppleUSB20XHCIPort"))
                           .add(8, "HS02@14200000" + nodeTail("AppleUSB20XHCIPort"))
                           .ports();
    ASSERT_EQ(ports.size(), 2u);
    EXPECT_EQ(ports[0].name, "HS02");
    EXPECT_EQ(ports[0].portData, portData(2));
    EXPECT_EQ(ports[1].portData, portData(17));
}

TEST(ParsePorts, TheFirstLineOfANameWins) {
    // A hub's HS01 above the root port's HS01 takes the name.
    const auto hubFirst = Block()
                              .add(8, "SS01@14500000" + nodeTail("AppleUSB30XHCIPort"))
                              .add(10, "Hub@14500000" + nodeTail("AppleUSB30Hub"))
                              .add(12, "HS01@14510000" + nodeTail("AppleUSB20XHCIPort"))
                              .add(8, "HS01@14100000" + nodeTail("AppleUSB20XHCIPort"))
                              .ports();
    ASSERT_EQ(hubFirst.size(), 2u);
    EXPECT_EQ(hubFirst[0].location, "14510000");
    EXPECT_EQ(hubFirst[0].portData, portData(5));
    EXPECT_EQ(hubFirst[1].name, "SS01");
    EXPECT_EQ(hubFirst[1].activeDevice, "Hub");

    const auto rootFirst = Block()
                               .add(8, "HS01@14100000" + nodeTail("AppleUSB20XHCIPort"))
                               .add(8, "SS01@14500000" + nodeTail("AppleUSB30XHCIPort"))
                               .add(10, "Hub@14500000" + nodeTail("AppleUSB30Hub"))
                               .add(12, "hs01@14510000" + nodeTail("AppleUSB20XHCIPort"))
                               .ports();
    ASSERT_EQ(rootFirst.size(), 2u);
    EXPECT_EQ(rootFirst[0].location, "14100000");
}

TEST(ParsePorts, PropertiesOfChildrenAreNotThePortsOwn) {
    const auto ports = Block()
                           .add(8, "HS01@14100000" + nodeTail("AppleUSB20XHCIPort"))
                           .add(10, "Device@14100000" + nodeTail("IOUSBHostDevice"))
                           .property("\"port\" = <09000000>")
                           .property("\"UsbConnector\" = 10")
                           .ports();
    ASSERT_EQ(ports.size(), 1u);
    EXPECT_EQ(ports[0].portData, portData(1));
    EXPECT_EQ(ports[0].connector, 3);
}

TEST(ParsePorts, PortLinesNestedPastTheLimitAreNoPorts) {
    Block block;
    for (int level = 0; level < 40; ++level) {
        block.add(8 + 2 * level,
                  "HS" + std::to_string(100 + level) + "@14100000" + nodeTail("AppleUSB20XHCIPort"));
    }
    EXPECT_EQ(block.ports().size(), 32u);
}

TEST(ParsePorts, SameNumberSortsByName) {
    const auto ports = Block()
                           .add(8, "SS02@14100000" + nodeTail("AppleUSB30XHCIPort"))
                           .property("\"port\" = <02000000>")
                           .add(8, "HS02@14200000" + nodeTail("AppleUSB20XHCIPort"))
                           .property("\"port\" = <02000000>")
                           .ports();
    EXPECT_EQ(names(ports), (std::vector<std::string>{"HS02", "SS02"}));
}

struct CommentCase {
    std::string name;
    std::string portName;
    std::string connectorProperty; // empty: none stated
    std::string child;             // a node line below the port, or empty
    std::string childProperty;     // a line of the child's properties, or empty
    std::int64_t connector;
    std::string comment;
};

class PortCommentTest : public ::testing::TestWithParam<CommentCase> {};

TEST_P(PortCommentTest, ConnectorActivityAndComment) {
    const auto& row = GetParam();
    Block block;
    block.add(8, row.portName + "@14300000" +
                     nodeTail(row.portName.starts_with("SS") ? "AppleUSB30XHCIPort" : "AppleUSB20XHCIPort"));
    if (!row.connectorProperty.empty()) {
        block.property(row.connectorProperty);
    }
    if (!row.child.empty()) {
        block.add(10, row.child);
    }
    if (!row.childProperty.empty()) {
        block.property(row.childProperty);
    }
    const auto ports = block.ports();
    ASSERT_EQ(ports.size(), 1u);
    EXPECT_EQ(ports[0].connector, row.connector);
    EXPECT_EQ(ports[0].comment, row.comment);
}

INSTANTIATE_TEST_SUITE_P(
    Ports, PortCommentTest,
    ::testing::Values(
        // The other branches stand in the hand-made dump below.
        CommentCase{"USB3", "SS05", "\"UsbConnector\" = 3", "", "", 3,
                    "USB3 - Location 0x14300000 - No active device"},
        CommentCase{"BluetoothInAPropertyOnly", "HS05", "\"Name\" = \"bluetooth module\"", "", "", 255,
                    "Internal - Location 0x14300000 - Active: Bluetooth"},
        CommentCase{"InternalWordMakesItInternal", "HS05", "\"Built-in\" = \"INTERNAL\"", "", "", 255,
                    "Internal - Location 0x14300000 - No active device"},
        CommentCase{"StatedConnectorBeatsTheWords", "HS05", "\"UsbConnector\" = 10",
                    "Bluetooth USB Host Controller@14300000" + nodeTail("IOUSBHostDevice"), "", 10,
                    "Type-C - Location 0x14300000 - Active: Bluetooth USB Host Controller"}),
    [](const ::testing::TestParamInfo<CommentCase>& row) { return row.param.name; });

TEST(ActiveDeviceName, IsTheWholeNodeNameOfTheFirstNonPortChild) {
    const std::string full = "+-o HS01@14100000" + nodeTail("AppleUSB20XHCIPort") + "\n" + "  +-o Port@1" +
                             nodeTail("AppleUSBHostPort") + "\n" +
                             "  +-o My USB Hub  <class AppleUSB20Hub, id 1>";
    EXPECT_EQ(activeDeviceName(full), "My USB Hub");
    EXPECT_EQ(activeDeviceName("+-o HS01@14100000" + nodeTail("AppleUSB20XHCIPort")), "");
}

TEST(HandMadeDump, EveryPortBranchInOneControllerBlock) {
    const auto bytes = readFileBytes(dumptest::dataFile("dumpscan/handmade-every-port-branch.txt"));
    if (!bytes) {
        GTEST_SKIP() << "tests/data/dumpscan/handmade-every-port-branch.txt is missing";
    }
    const DumpLines lines(*bytes);
    std::size_t controller = 0;
    while (controller < lines.size() &&
           lines.line(controller).find("XHC1@14000000") == std::string_view::npos) {
        ++controller;
    }
    ASSERT_LT(controller, lines.size());
    std::ostringstream summary;
    for (const auto& port :
         parsePorts(lines, controller, lines.blockEnd(controller), lines.depth(controller))) {
        summary << port.name << " " << port.location << " " << port.connector << " "
                << hexString(port.portData) << " | " << port.comment << "\n";
    }
    EXPECT_EQ(summary.str(),
              "RHUB 14000000 3 00000000 | USB2/USB3 companion - Location 0x14000000 - No active device\n"
              "HS01 14100000 0 01000000 | USB2 - Location 0x14100000 - Active: Keyboard\n"
              "HS02 14200000 255 02000000 | Internal - Location 0x14200000 - Active: Bluetooth USB Host "
              "Controller\n"
              "HS03 14300000 255 03000000 | Internal - Location 0x14300000 - Active: LED Controller\n"
              "HS04 14400000 7 04000000 | UsbConnector 7 - Location 0x14400000 - No active device\n"
              "HS05 14500000 3 05000000 | USB2/USB3 companion - Location 0x14500000 - No active "
              "device\n"
              "HS07 14610000 3 06000000 | USB2/USB3 companion - Location 0x14610000 - No active "
              "device\n"
              "USR1 14700000 255 07000000 | Internal - Location 0x14700000 - No active device\n"
              "PRT8 14800000 9 08000000 | Type-C + Switch - Location 0x14800000 - No active device\n"
              "SS01 14600000 10 11000000 | Type-C - Location 0x14600000 - Active: Hub\n");
}

} // namespace
} // namespace korvane
