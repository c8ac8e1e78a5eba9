#include "scanner/PortDiscovery.h"

#include "ScannerTestSupport.h"

#include <gtest/gtest.h>

namespace korvane {
namespace {

struct PortNodeCase {
    std::string name;
    std::string nodeName;
    std::string className;
    PropertyDictionary properties;
    bool isPort;

    friend void PrintTo(const PortNodeCase& row, std::ostream* out) { *out << row.name; }
};

class PortNodes : public ::testing::TestWithParam<PortNodeCase> {};

TEST_P(PortNodes, NeedAPortNameAndAClassOrPortKey) {
    const auto& param = GetParam();
    NativeUSBNode node(param.nodeName, "", param.className, param.properties, nullptr);
    EXPECT_EQ(isUSBPortNode(node), param.isPort);
}

using Row = PortNodeCase;

// clang-format off
INSTANTIATE_TEST_SUITE_P(Ports, PortNodes, ::testing::Values(
    Row{"PortKeyOnly", "PRT1", "IOService", {{"port", ByteBuffer{1, 0, 0, 0}}}, true},
    Row{"NoClassNoKey", "PRT1", "IOService", {}, false},
    Row{"ConnectorKeyOnly", "SS01", "IOService", {{"UsbConnector", 3}}, true},
    Row{"PortClass", "HS01", "AppleUSB20XHCIPort", {}, true},
    Row{"NameWithLocation", "HS01@14", "AppleUSB20XHCIPort", {}, true},
    Row{"LowerCaseName", "hsp3", "AppleUSB30XHCIPort", {}, true},
    Row{"XHCIClass", "USR1", "AppleUSBXHCIFoo", {}, true},
    Row{"SixCharactersBehindPrefix", "HS123456", "AppleUSB20XHCIPort", {}, false},
    Row{"WordAfterPrefix", "HSPORT", "AppleUSB20XHCIPort", {}, true},
    Row{"ShortName", "SS1", "AppleUSB30XHCIPort", {}, true},
    Row{"OtherPrefix", "EHC1", "AppleUSB20XHCIPort", {}, false},
    Row{"UsbIsNoPrefix", "USB1", "AppleUSBHostPort", {}, false},
    Row{"SharpSUpperCasesToSS", "\xC3\x9F" "01", "AppleUSBHostPort", {}, true}),
    [](const ::testing::TestParamInfo<Row>& row) { return row.param.name; });
// clang-format on

TEST(InferredPortNumber, LocationWinsElseNameDigitsPlusSixteenForSS) {
    EXPECT_EQ(inferredPortNumber("SS01", ""), 17);
    EXPECT_EQ(inferredPortNumber("SSP2", ""), 18);
    EXPECT_EQ(inferredPortNumber("HS01", ""), 1);
    EXPECT_EQ(inferredPortNumber("USR1", ""), 1);
    EXPECT_EQ(inferredPortNumber("HS01", "1A"), 26);
    EXPECT_EQ(inferredPortNumber("HS01", "0,,1A,"), 26);
    EXPECT_EQ(inferredPortNumber("HS03", "0"), 3);
    EXPECT_EQ(inferredPortNumber("SS03", "xyz"), 19);
    EXPECT_EQ(inferredPortNumber("HSPORT", ""), 0);
}

class ScanPorts : public ::testing::Test {
  protected:
    TinyIDsDatabases databases;
    std::unique_ptr<NativeUSBNode> root = makeRoot();
    NativeUSBNode& pci = addXHCIPCIDevice(*root, "XHC1", "14", 0x8086, 0xA36D);

    NativeUSBNode& addService(PropertyDictionary table, const std::string& location = "14") {
        return pci.addChild("XHC1", location, "AppleIntelCNLUSBXHCI", {{"ports", std::move(table)}});
    }
    static NativeUSBNode& addPort(NativeUSBNode& parent, const std::string& name, const std::string& location,
                                  PropertyDictionary properties = {}) {
        return parent.addChild(name, location, "AppleUSB20XHCIPort", std::move(properties));
    }
    static void addDevice(NativeUSBNode& parent, const std::string& name) {
        parent.addChild(name, "", "IOUSBHostDevice", {{"USB Product Name", name}});
    }
    std::vector<USBPortMap> ports(const NativeUSBNode& service) {
        return scanPorts(service, databases.names());
    }
};

TEST_F(ScanPorts, NothingToFindGivesNoPorts) {
    EXPECT_TRUE(ports(pci.addChild("XHC1", "14", "AppleIntelCNLUSBXHCI", {})).empty());
}

TEST_F(ScanPorts, TableKeysAreCutToPortNamesAndNumbersInferredFromLocation) {
    const auto& service =
        addService({{"hs01@14", PropertyDictionary{}}, {"EHC1", PropertyDictionary{}}}, "1A");
    const auto result = ports(service);
    ASSERT_EQ(result.size(), 1u);
    EXPECT_EQ(result[0].name, "HS01");
    EXPECT_EQ(result[0].location, "1A");
    EXPECT_EQ(result[0].portData, (ByteBuffer{0x1A, 0, 0, 0}));
    EXPECT_EQ(result[0].connector, 3);

    const auto unlocated = ports(addService({{"SS02", PropertyDictionary{}}}, ""));
    ASSERT_EQ(unlocated.size(), 1u);
    EXPECT_EQ(unlocated[0].portData, (ByteBuffer{18, 0, 0, 0}));
}

TEST_F(ScanPorts, SortsByNumberThenNameWithEmptyDataFirst) {
    const auto& service =
        addService({{"HS10", PropertyDictionary{{"port", ByteBuffer{2, 0, 0, 0}}}},
                    {"SS01", PropertyDictionary{{"port", ByteBuffer{0x0A, 0, 0, 0}}}},
                    {"HS02", PropertyDictionary{{"port", 2}}},
                    {"USR1", PropertyDictionary{{"port", ByteBuffer{}}, {"UsbConnector", 7}}}});
    const auto result = ports(service);
    ASSERT_EQ(result.size(), 4u);
    EXPECT_EQ(result[0].name, "USR1");
    EXPECT_EQ(result[0].connector, 7);
    EXPECT_EQ(result[1].name, "HS02");
    EXPECT_EQ(result[2].name, "HS10");
    EXPECT_EQ(result[3].name, "SS01");
}

TEST_F(ScanPorts, DuplicateTreeNodeAddsOnlyItsDevice) {
    auto& service = addService({});
    addPort(service, "HS01", "14100000", {{"port", ByteBuffer{1, 0, 0, 0}}});
    auto& second = addPort(service, "HS01@2", "99", {{"port", ByteBuffer{9, 0, 0, 0}}});
    addDevice(second, "Keyboard");
    const auto result = ports(service);
    ASSERT_EQ(result.size(), 1u);
    EXPECT_EQ(result[0].location, "14100000");
    EXPECT_EQ(result[0].portData, (ByteBuffer{1, 0, 0, 0}));
    EXPECT_EQ(result[0].activeDevice, "Keyboard");
}

TEST_F(ScanPorts, HubPortsBelowAPortAreListedAndTheDeviceBehindTheHubWins) {
    auto& service = addService({});
    auto& port = addPort(service, "HS01", "14100000", {{"port", ByteBuffer{1, 0, 0, 0}}});
    auto& hub = port.addChild("USB2.0 Hub", "14100000", "IOUSBHostDevice", {{"idVendor", 0x05E3}});
    addDevice(addPort(hub, "HS01", "14110000", {{"port", ByteBuffer{1, 0, 0, 0}}}), "Keyboard");
    addPort(hub, "HS05", "14150000", {{"port", ByteBuffer{5, 0, 0, 0}}});
    const auto result = ports(service);
    ASSERT_EQ(result.size(), 2u);
    EXPECT_EQ(result[0].name, "HS01");
    EXPECT_EQ(result[0].activeDevice, "Keyboard");
    EXPECT_EQ(result[1].name, "HS05");
    EXPECT_EQ(result[1].location, "14150000");
    EXPECT_EQ(result[1].activeDevice, "");
}

TEST_F(ScanPorts, TableDecidesNumberAndLocationTreeAddsDeviceAndActiveConnector) {
    auto& service =
        addService({{"HS01", PropertyDictionary{{"port", ByteBuffer{1, 0, 0, 0}}, {"UsbConnector", 0}}},
                    {"HS02", PropertyDictionary{{"port", ByteBuffer{2, 0, 0, 0}}, {"UsbConnector", 0}}},
                    {"HS03", PropertyDictionary{{"port", ByteBuffer{3, 0, 0, 0}}, {"UsbConnector", 3}}}});
    addDevice(addPort(service, "HS01", "77", {{"port", ByteBuffer{7, 0, 0, 0}}, {"UsbConnector", 9}}),
              "Phone");
    addPort(service, "HS02", "78", {{"UsbConnector", 10}});
    addDevice(addPort(service, "HS03", "79", {}), "Disk");
    const auto result = ports(service);
    ASSERT_EQ(result.size(), 3u);
    EXPECT_EQ(result[0].portData, (ByteBuffer{1, 0, 0, 0}));
    EXPECT_EQ(result[0].location, "14");
    EXPECT_EQ(result[0].activeDevice, "Phone");
    EXPECT_EQ(result[0].connector, 9);
    EXPECT_EQ(result[1].connector, 0) << "an idle tree port must not override the table";
    EXPECT_EQ(result[1].activeDevice, "");
    EXPECT_EQ(result[2].connector, 3) << "no tree connector, no inference: the table's stays";
    EXPECT_EQ(result[2].activeDevice, "Disk");
}

TEST_F(ScanPorts, BluetoothMakesInferredConnectorsInternal) {
    auto& service =
        addService({{"HS01", PropertyDictionary{{"port", ByteBuffer{1, 0, 0, 0}}}},
                    {"HS02", PropertyDictionary{{"port", ByteBuffer{2, 0, 0, 0}}, {"UsbConnector", 3}}}});
    auto& port = addPort(service, "HS14", "", {{"port", ByteBuffer{14, 0, 0, 0}}});
    port.addChild("BCM20702A0", "", "IOUSBHostDevice",
                  {{"USB Product Name", "Bluetooth USB Host Controller"}});
    addPort(service, "HS13", "", {{"port", ByteBuffer{13, 0, 0, 0}}});
    addPort(service, "USR1", "", {{"port", ByteBuffer{15, 0, 0, 0}}});
    const auto result = ports(service);
    ASSERT_EQ(result.size(), 5u);
    EXPECT_EQ(result[0].connector, 255) << "table port asks the service, whose first device is Bluetooth";
    EXPECT_EQ(result[1].connector, 3);
    EXPECT_EQ(result[2].name, "HS13");
    EXPECT_EQ(result[2].connector, 3);
    EXPECT_EQ(result[3].name, "HS14");
    EXPECT_EQ(result[3].connector, 255);
    EXPECT_EQ(result[3].activeDevice, "Bluetooth");
    EXPECT_EQ(result[4].connector, 255) << "USR ports are internal";
}

} // namespace
} // namespace korvane
