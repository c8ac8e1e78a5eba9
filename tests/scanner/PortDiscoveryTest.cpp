#include "scanner/PortDiscovery.h"

#include "support/IDsHome.h"
#include "support/RegistryTrees.h"

#include <gtest/gtest.h>

namespace korvane {
namespace {

using B = ByteBuffer;

TEST(PortDiscovery, APortNodeNeedsAPortNameAndAPortClassOrKey) {
    const std::tuple<const char*, const char*, PropertyDictionary, bool> rows[] = {
        {"PRT1", "IOService", {{"port", B{1, 0, 0, 0}}}, true},
        {"PRT1", "IOService", {}, false},
        {"SS01", "IOService", {{"UsbConnector", 3}}, true},
        {"hsp3@14", "AppleUSB30XHCIPort", {}, true},
        {"USR1", "AppleUSBXHCIFoo", {}, true},
        {"HS123456", "AppleUSB20XHCIPort", {}, false},
        {"EHC1", "AppleUSB20XHCIPort", {}, false},
        {"USB1", "AppleUSBHostPort", {}, false},
        {"\u00DF01", "AppleUSBHostPort", {}, true}, // sharp s upper-cases to SS
    };
    for (const auto& [name, className, properties, isPort] : rows) {
        EXPECT_EQ(isUSBPortNode(NativeUSBNode(name, "", className, properties, nullptr)), isPort) << name;
    }
}

TEST(PortDiscovery, ANumberComesFromTheLocationsLastPieceElseFromTheName) {
    EXPECT_EQ(inferredPortNumber("HS01", "1A"), 26);
    EXPECT_EQ(inferredPortNumber("HS01", "0,,1A,"), 26);
    EXPECT_EQ(inferredPortNumber("HS03", "0"), 3);
    EXPECT_EQ(inferredPortNumber("SS03", "xyz"), 19);
}

class ScanPorts : public ::testing::Test {
  protected:
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
    // Name, number, connector, location and device of each port, in order.
    std::string ports(const NativeUSBNode& service) {
        std::string text;
        for (const auto& port : scanPorts(service, ids.names())) {
            text += port.name + " " + std::to_string(portNumber(port.portData).value_or(-1)) + " " +
                    std::to_string(port.connector) + " @" + port.location + " " + port.activeDevice + "|";
        }
        return text;
    }

    IDsHome ids;
    std::unique_ptr<NativeUSBNode> root = makeRoot();
    NativeUSBNode& pci = addXHCIPCIDevice(*root, "XHC1", "14", 0x8086, 0xA36D);
};

TEST_F(ScanPorts, TheTableDecidesNumberAndLocationTheTreeAddsDeviceAndAnActivePortsConnector) {
    auto& service = addService({{"HS01", PropertyDictionary{{"port", B{1, 0, 0, 0}}, {"UsbConnector", 0}}},
                                {"hs02@14", PropertyDictionary{{"port", 2}, {"UsbConnector", 0}}},
                                {"HS03", PropertyDictionary{{"UsbConnector", 3}}},
                                {"EHC1", PropertyDictionary{}}});
    addDevice(addPort(service, "HS01", "77", {{"port", B{7, 0, 0, 0}}, {"UsbConnector", 9}}), "Phone");
    addPort(service, "HS02", "78", {{"UsbConnector", 10}});
    addDevice(addPort(service, "HS03", "79"), "Disk");
    addPort(service, "HS04", "14400000", {{"port", B{4, 0, 0, 0}}});
    EXPECT_EQ(ports(service), "HS01 1 9 @14 Phone|"
                              "HS02 2 0 @14 |"        // an idle tree port doesn't override the table
                              "HS04 4 3 @14400000 |"  // a tree port the table lacks
                              "HS03 20 3 @14 Disk|"); // no number: the location's last piece, hex 14
}

TEST_F(ScanPorts, HubPortsBelowAPortAreListedAndOnlyTheFirstOfANameCounts) {
    auto& service = addService({});
    auto& port = addPort(service, "HS01", "14100000", {{"port", B{1, 0, 0, 0}}});
    auto& hub = port.addChild("USB2.0 Hub", "14100000", "IOUSBHostDevice", {{"idVendor", 0x05E3}});
    addDevice(addPort(hub, "HS01", "14110000", {{"port", B{1, 0, 0, 0}}}), "Keyboard");
    addPort(hub, "HS05", "14150000", {{"port", B{5, 0, 0, 0}}});
    EXPECT_EQ(ports(service), "HS01 1 3 @14100000 Keyboard|HS05 5 3 @14150000 |");
}

TEST_F(ScanPorts, BluetoothAndUSRPortsAreInternalWhenNothingStatesAConnector) {
    auto& service = addService({{"HS01", PropertyDictionary{{"port", B{1, 0, 0, 0}}}},
                                {"HS02", PropertyDictionary{{"port", B{2, 0, 0, 0}}, {"UsbConnector", 3}}}});
    addPort(service, "HS14", "", {{"port", B{14, 0, 0, 0}}})
        .addChild("BCM20702A0", "", "IOUSBHostDevice",
                  {{"USB Product Name", "Bluetooth USB Host Controller"}});
    addPort(service, "USR1", "", {{"port", B{15, 0, 0, 0}}});
    EXPECT_EQ(ports(service),
              "HS01 1 255 @14 |" // the table port asks the service, whose first device is Bluetooth
              "HS02 2 3 @14 |"
              "HS14 14 255 @ Bluetooth|"
              "USR1 15 255 @ |");
}

// A saved tree may claim anything. A source counts only beside a code the
// node states; the user's word and words no build writes become "inferred"
// (one to check), never the registry's; odd place words are dropped.
TEST_F(ScanPorts, AStatedCodeTakesTheSourceNamedBesideItOrIsOneToCheck) {
    const PropertyDictionary place{{"panel", "back"}, {"vertical_position", "sideways"}, {"dock", 1}};
    const std::tuple<PropertyDictionary, const char*, std::optional<PortPlace>> rows[] = {
        {{{"UsbConnector", 9}}, "registry", std::nullopt},
        {{{"UsbConnector", 9}, {"connector-source", "firmware"}}, "firmware", std::nullopt},
        {{{"UsbConnector", 9}, {"connector-source", "user"}}, "inferred", std::nullopt},
        {{{"UsbConnector", 9}, {"connector-source", "Firmware"}}, "inferred", std::nullopt},
        {{{"UsbConnector", 9}, {"connector-source", 2}}, "inferred", std::nullopt},
        // No code stated, none named.
        {{{"connector-source", "firmware"}, {"physical-location", place}},
         "inferred",
         portPlaceFromWords("back", "", "", true, false)},
    };
    for (const auto& [properties, source, expectedPlace] : rows) {
        auto& service = addService({});
        addPort(service, "HS01", "", properties);
        const auto port = scanPorts(service, ids.names()).at(0);
        EXPECT_EQ(connectorSourceName(port.connectorSource), std::string_view(source)) << source;
        EXPECT_EQ(port.place, expectedPlace) << source;
    }
}

} // namespace
} // namespace korvane
