#include "platform/linux/SysfsXHCIService.h"

#include "ids/IDsNameResolver.h"
#include "linux/SysfsFixtureWriter.h"
#include "platform/linux/SysfsRegistrySource.h"
#include "scanner/NativeUSBTreeScanner.h"
#include "scanner/PropertyReaders.h"
#include "support/TempFolder.h"

#include <gtest/gtest.h>

namespace korvane {
namespace {

const std::filesystem::path controller = "devices/pci0000:00/0000:00:14.0";

// An Intel-style controller: 3 USB 2 ports, 2 USB 3 ports, firmware data for
// some of them only.
class SysfsXHCIServiceTest : public ::testing::Test {
  protected:
    void SetUp() override {
        fixture_.pciFunction(controller, "0x8086", "0xa36d", "0x0c0330");
        const auto usb1 = controller / "usb1";
        const auto usb2 = controller / "usb2";
        fixture_.attribute(usb1 / "speed", "480");
        fixture_.attribute(usb2 / "speed", "5000");
        const auto hs1 = usb1 / "1-0:1.0/usb1-port1";
        const auto hs2 = usb1 / "1-0:1.0/usb1-port2";
        const auto hs3 = usb1 / "1-0:1.0/usb1-port3";
        const auto ss1 = usb2 / "2-0:1.0/usb2-port1";
        const auto ss2 = usb2 / "2-0:1.0/usb2-port2";
        fixture_.firmwareNode(hs1, "HS01", "\\_SB_.PCI0.XHC_.RHUB.HS01", "0x00000001");
        fixture_.attribute(hs1 / "connect_type", "hotplug");
        fixture_.link(hs1 / "peer", "../../../usb2/2-0:1.0/usb2-port1");
        fixture_.attribute(hs2 / "connect_type", "hardwired");
        fixture_.attribute(hs3 / "connect_type", "hotplug");
        // A firmware name the port pattern refuses keeps the default name.
        fixture_.firmwareNode(ss1, "SS01", "\\_SB_.PCI0.XHC_.RHUB.PORTX", "0x00000011");
        fixture_.link(ss1 / "peer", "../../../usb1/1-0:1.0/usb1-port1");
        fixture_.folder(ss2);
    }

    std::vector<SysfsXHCIService::RootPort> rootPorts() const {
        const auto address = PCIAddress::parse("0000:00:14.0");
        const SysfsPCIDevice device(folder_.path() / controller, *address);
        return SysfsXHCIService(device, folder_.path() / "kernel/debug").rootPorts();
    }

    TempFolder folder_;
    SysfsFixtureWriter fixture_{folder_.path()};
};

TEST_F(SysfsXHCIServiceTest, PortsTakeFirmwareFactsAndGuessOnlyWhereNoneExist) {
    using Source = SysfsXHCIService::NumberSource;
    struct Row {
        const char* name;
        std::uint32_t number;
        Source source;
        std::optional<std::int64_t> connector;
        const char* peer;
    };
    const Row expected[] = {
        {"HS01", 1, Source::firmware, 3, "SS01"},      // hotplug with a USB 3 peer
        {"HS02", 2, Source::rootHubPosition, 255, ""}, // hardwired
        {"HS03", 3, Source::rootHubPosition, 0, ""},   // hotplug, no peer: USB 2 only
        {"SS01", 17, Source::firmware, 3, "HS01"},
        {"SS02", 5, Source::rootHubPosition, 3, ""}, // 2 + the 3 USB 2 ports
    };
    const auto ports = rootPorts();
    ASSERT_EQ(ports.size(), std::size(expected));
    for (std::size_t i = 0; i < ports.size(); ++i) {
        SCOPED_TRACE(expected[i].name);
        EXPECT_EQ(ports[i].name, expected[i].name);
        EXPECT_EQ(ports[i].number, expected[i].number);
        EXPECT_EQ(ports[i].numberSource, expected[i].source);
        EXPECT_EQ(ports[i].connector, expected[i].connector);
        EXPECT_EQ(ports[i].peerName, expected[i].peer);
    }
}

TEST_F(SysfsXHCIServiceTest, DebugfsNumbersWinOverTheGuessButNotOverFirmware) {
    // The USB 3 ports first, as on QEMU: USB 3 at 1-2, USB 2 at 3-5.
    fixture_.attribute("kernel/debug/usb/xhci/0000:00:14.0/reg-ext-protocol:00",
                       "EXTCAP_REVISION = 0x03000802\nEXTCAP_PORTINFO = 0x00000201");
    fixture_.attribute("kernel/debug/usb/xhci/0000:00:14.0/reg-ext-protocol:01",
                       "EXTCAP_REVISION = 0x02000802\nEXTCAP_PORTINFO = 0x00000303");
    std::vector<std::uint32_t> numbers;
    for (const auto& port : rootPorts()) {
        numbers.push_back(port.number);
    }
    EXPECT_EQ(numbers, (std::vector<std::uint32_t>{1, 4, 5, 17, 2}));
}

TEST_F(SysfsXHCIServiceTest, PortNodesCarryTheMacsLocationsAndSayWhereTheNumberCameFrom) {
    const auto root = SysfsRegistrySource(folder_.path()).copyRoot();
    ASSERT_NE(root, nullptr);
    const NativeUSBNode* service = nullptr;
    for (const NativeUSBNode* node : flatten(*root)) {
        if (node->className == "xhci_hcd") {
            service = node;
        }
    }
    ASSERT_NE(service, nullptr);
    EXPECT_EQ(intProperty("locationID", service->properties), 0x14000000);
    ASSERT_EQ(service->children.size(), 5u);
    const NativeUSBNode& hs1 = *service->children[0];
    EXPECT_EQ(hs1.name, "HS01");
    EXPECT_EQ(hs1.location, "14100000");
    EXPECT_EQ(intProperty("locationID", hs1.properties), 0x14100000);
    EXPECT_EQ(hs1.properties.at("peer"), PropertyValue("SS01"));
    EXPECT_EQ(hs1.properties.at("port"), PropertyValue(ByteBuffer{1, 0, 0, 0}));
    const NativeUSBNode& ss2 = *service->children[4];
    EXPECT_EQ(ss2.location, "14500000");
    EXPECT_NE(ss2.properties.at("port-number-source").text()->find("guess"), std::string::npos);
    EXPECT_EQ(service->children[1]->properties.count("UsbConnector"), 1u);
}

TEST_F(SysfsXHCIServiceTest, HubPortsStayOutOfTheControllersPortList) {
    const auto hub = controller / "usb1/1-2";
    fixture_.attribute(hub / "product", "USB2.0 Hub");
    fixture_.attribute(hub / "idVendor", "2109");
    fixture_.attribute(hub / "idProduct", "2817");
    for (int port = 1; port <= 4; ++port) {
        fixture_.attribute(hub / "1-2:1.0" / ("1-2-port" + std::to_string(port)) / "connect_type", "hotplug");
    }
    const auto device = hub / "1-2.3";
    fixture_.attribute(device / "product", "Caf\xe9 Stick"); // not UTF-8: no name from it
    fixture_.attribute(device / "manufacturer", "Generic");
    fixture_.attribute(device / "idVendor", "0781");
    fixture_.attribute(device / "idProduct", "5583");

    const SysfsRegistrySource source(folder_.path());
    IDsNameResolver names(IDsDatabaseLocations{folder_.path() / "none", folder_.path() / "none"});
    const auto result = NativeUSBTreeScanner(source, names).scan();
    ASSERT_EQ(result.controllers.size(), 1u);
    std::vector<std::string> portNames;
    for (const auto& port : result.controllers[0].ports) {
        portNames.push_back(port.name);
        if (port.name == "HS02") {
            EXPECT_EQ(port.activeDevice, "USB2.0 Hub");
        }
    }
    EXPECT_EQ(portNames, (std::vector<std::string>{"HS01", "HS02", "HS03", "SS02", "SS01"}));

    const auto root = source.copyRoot();
    for (const NativeUSBNode* node : flatten(*root)) {
        if (node->className == "IOUSBHostDevice" && intProperty("idVendor", node->properties) == 0x0781) {
            EXPECT_EQ(node->parent->name, "Port3");
            EXPECT_EQ(node->properties.count("USB Product Name"), 0u);
            EXPECT_EQ(node->properties.at("USB Vendor Name"), PropertyValue("Generic"));
            EXPECT_EQ(intProperty("locationID", node->properties), 0x14230000);
        }
    }
}

} // namespace
} // namespace korvane
