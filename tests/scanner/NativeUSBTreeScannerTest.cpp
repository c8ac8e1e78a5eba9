#include "scanner/NativeUSBTreeScanner.h"

#include "ScannerTestSupport.h"

#include <functional>
#include <gtest/gtest.h>

namespace korvane {
namespace {

class TreeSource : public RegistrySource {
  public:
    explicit TreeSource(std::function<std::unique_ptr<NativeUSBNode>()> make) : make_(std::move(make)) {}
    std::unique_ptr<NativeUSBNode> copyRoot() const override { return make_(); }

  private:
    std::function<std::unique_ptr<NativeUSBNode>()> make_;
};

class NativeUSBTreeScannerTest : public ::testing::Test {
  protected:
    TinyIDsDatabases databases;
    std::unique_ptr<NativeUSBNode> root = makeRoot();

    USBScanResult scan() {
        const TreeSource unused([] { return nullptr; });
        return NativeUSBTreeScanner(unused, databases.names()).scanTree(*root);
    }
    static NativeUSBNode& addService(NativeUSBNode& pci, const std::string& name = "XHCI@14",
                                     const std::string& location = "") {
        return pci.addChild(name, location, "AppleIntelCNLUSBXHCI", {});
    }
    static std::vector<std::string> locations(const USBScanResult& result) {
        std::vector<std::string> all;
        for (const auto& controller : result.controllers) {
            all.push_back(controller.location);
        }
        return all;
    }
};

TEST_F(NativeUSBTreeScannerTest, NoTreeGivesAnEmptyResult) {
    const TreeSource none([] { return nullptr; });
    EXPECT_TRUE(NativeUSBTreeScanner(none, databases.names()).scan().controllers.empty());
}

TEST_F(NativeUSBTreeScannerTest, ScanTakesTheSourceTree) {
    const TreeSource source([] {
        auto tree = makeRoot();
        addXHCIPCIDevice(*tree, "XHC1", "14", 0x8086, 0xA36D);
        return tree;
    });
    EXPECT_EQ(NativeUSBTreeScanner(source, databases.names()).scan().controllers.size(), 1u);
}

TEST_F(NativeUSBTreeScannerTest, ServiceWithoutXHCIDeviceAboveIsNoController) {
    auto& pci = root->addChild("EHC1", "1D", "IOPCIDevice",
                               {{"class-code", 0x0C0320}, {"vendor-id", 0x8086}, {"device-id", 1}});
    addService(pci);
    root->addChild("XHC", "", "AppleUSBXHCI", {});
    EXPECT_TRUE(scan().controllers.empty());
}

TEST_F(NativeUSBTreeScannerTest, ServiceControllerTakesIdentityFromBuffersAndNamesFromDatabase) {
    auto& service = addService(addXHCIPCIDevice(*root, "XHC1@14", "14", 0x8086, 0xA36D), "XHCI@14");
    service.addChild("HS01", "14100000", "AppleUSB20XHCIPort", {{"port", ByteBuffer{1, 0, 0, 0}}});
    const auto result = scan();
    ASSERT_EQ(result.controllers.size(), 1u);
    const auto& controller = result.controllers[0];
    EXPECT_EQ(controller.name, "XHCI");
    EXPECT_EQ(controller.location, "14");
    EXPECT_EQ(controller.vendorID, 0x8086);
    EXPECT_EQ(controller.deviceID, 0xA36D);
    EXPECT_EQ(controller.ioNameMatch, "pci8086,a36d");
    EXPECT_EQ(controller.providerClass, "AppleIntelCNLUSBXHCI");
    EXPECT_EQ(controller.usbDeviceName, "Intel Corporation Cannon Lake PCH USB 3.1 xHCI Host Controller");
    ASSERT_EQ(controller.ports.size(), 1u);
    EXPECT_EQ(controller.ports[0].name, "HS01");
}

TEST_F(NativeUSBTreeScannerTest, LocationFallsBackToTheServiceAndNameToUSBDatabase) {
    addService(addXHCIPCIDevice(*root, "XHC2", "", 0x1B21, 0x1242), "XHC2", "3");
    const auto result = scan();
    ASSERT_EQ(result.controllers.size(), 1u);
    EXPECT_EQ(result.controllers[0].location, "3");
    EXPECT_EQ(result.controllers[0].usbDeviceName, "ASMedia Technology Inc. ASM1142 USB 3.1 Host Controller");
}

TEST_F(NativeUSBTreeScannerTest, StackedServicesUnderOnePCIDeviceGiveTheFirst) {
    auto& pci = addXHCIPCIDevice(*root, "XHC1", "14", 0x8086, 0xA36D);
    auto& outer = pci.addChild("XHC1", "", "AppleIntelCNLUSBXHCI", {});
    outer.addChild("HS01", "", "AppleUSB20XHCIPort", {});
    auto& inner = outer.addChild("XHC1", "", "AppleUSBXHCIPCI", {});
    inner.addChild("HS09", "", "AppleUSB20XHCIPort", {});
    const auto result = scan();
    ASSERT_EQ(result.controllers.size(), 1u);
    EXPECT_EQ(result.controllers[0].providerClass, "AppleIntelCNLUSBXHCI");
    EXPECT_EQ(result.controllers[0].ports.size(), 2u) << "the outer service's ports include those below";
}

TEST_F(NativeUSBTreeScannerTest, LikeControllersStayApartOnlyWithServices) {
    addService(addXHCIPCIDevice(*root, "XHC2", "20", 0x8086, 0xA36D));
    addService(addXHCIPCIDevice(*root, "XHC1", "14", 0x8086, 0xA36D));
    EXPECT_EQ(locations(scan()), (std::vector<std::string>{"14", "20"}));

    root = makeRoot();
    addXHCIPCIDevice(*root, "XHC2", "20", 0x8086, 0xA36D);
    addXHCIPCIDevice(*root, "XHC1", "14", 0x8086, 0xA36D);
    EXPECT_EQ(locations(scan()), (std::vector<std::string>{"20"})) << "the first in snapshot order stays";
}

TEST_F(NativeUSBTreeScannerTest, SecondPassAddsOnlyUnseenPairsWithoutPorts) {
    addService(addXHCIPCIDevice(*root, "XHC1", "14", 0x8086, 0xA36D));
    addXHCIPCIDevice(*root, "XHC3", "1C", 0x8086, 0xA36D);
    auto& lone = addXHCIPCIDevice(*root, "PXSX@0", "0", 0x1B21, 0x1242);
    lone.addChild("HS01", "", "AppleUSB20XHCIPort", {});
    const auto result = scan();
    ASSERT_EQ(result.controllers.size(), 2u);
    const auto& second = result.controllers[0];
    EXPECT_EQ(second.vendorID, 0x1B21);
    EXPECT_EQ(second.name, "PXSX");
    EXPECT_EQ(second.providerClass, "");
    EXPECT_TRUE(second.ports.empty());
    EXPECT_EQ(second.ioNameMatch, "pci1b21,1242");
    EXPECT_EQ(result.controllers[1].location, "14");
}

TEST_F(NativeUSBTreeScannerTest, SortsByVendorDeviceThenLocationAsNumbers) {
    addService(addXHCIPCIDevice(*root, "A", "10", 0x8086, 0xA36D));
    addService(addXHCIPCIDevice(*root, "B", "2", 0x8086, 0xA36D));
    addService(addXHCIPCIDevice(*root, "C", "99", 0x1022, 0x149C));
    addService(addXHCIPCIDevice(*root, "D", "1", 0x8086, 0xA36E));
    EXPECT_EQ(locations(scan()), (std::vector<std::string>{"99", "2", "10", "1"}));
}

} // namespace
} // namespace korvane
