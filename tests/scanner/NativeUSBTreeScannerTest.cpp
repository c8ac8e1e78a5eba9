#include "scanner/NativeUSBTreeScanner.h"

#include "support/IDsHome.h"
#include "support/RegistryTrees.h"
#include "support/ScanText.h"

#include <gtest/gtest.h>

namespace korvane {
namespace {

class NativeUSBTreeScannerTest : public ::testing::Test {
  protected:
    std::string scan() {
        const TreeSource unused([] { return nullptr; });
        return scanText(NativeUSBTreeScanner(unused, ids.names()).scanTree(*root));
    }
    static NativeUSBNode& addService(NativeUSBNode& pci, const std::string& name = "XHCI@14",
                                     const std::string& location = "") {
        return pci.addChild(name, location, "AppleIntelCNLUSBXHCI", {});
    }

    // Names only for 1b21:1242, and only in usb.ids, which the scanner asks second.
    IDsHome ids{"", testDataBytes("ids/tiny-usb.ids")};
    std::unique_ptr<NativeUSBNode> root = makeRoot();
};

TEST_F(NativeUSBTreeScannerTest, ControllersAreServicesBelowXHCIDevicesThenDevicesOfUnseenIDs) {
    auto& service = addService(addXHCIPCIDevice(*root, "XHC1@14", "14", 0x8086, 0xA36D), "XHCI@14");
    service.addChild("HS01", "14100000", "AppleUSB20XHCIPort", {{"port", ByteBuffer{1, 0, 0, 0}}});
    // The location falls back on the service's, the name on the USB database.
    addService(addXHCIPCIDevice(*root, "XHC2", "", 0x1B21, 0x1242), "XHC2", "3");
    // A device of IDs already seen adds nothing; one of new IDs comes without ports.
    addXHCIPCIDevice(*root, "XHC3", "1C", 0x8086, 0xA36D);
    addXHCIPCIDevice(*root, "PXSX@0", "0", 0x1022, 0x149C).addChild("HS01", "", "AppleUSB20XHCIPort", {});
    // A host service without an xHCI device above it is none.
    addService(root->addChild("EHC1", "1D", "IOPCIDevice", {{"class-code", 0x0C0320}}));
    EXPECT_EQ(scan(),
              "1022:149c PXSX@0    pci1022,149c  \"\"\n"
              "1b21:1242 XHC2@3  AppleIntelCNLUSBXHCI  pci1b21,1242  \"ASMedia Technology Inc. ASM1142 "
              "USB 3.1 Host Controller\"\n"
              "8086:a36d XHCI@14  AppleIntelCNLUSBXHCI  pci8086,a36d  \"\"\n"
              "  HS01  1  3  @14100000  \"\"\n");
}

TEST_F(NativeUSBTreeScannerTest, LikeControllersStayApartByLocationButStackedServicesGiveTheFirst) {
    addService(addXHCIPCIDevice(*root, "XHC2", "20", 0x8086, 0xA36D), "XHC2");
    auto& outer = addService(addXHCIPCIDevice(*root, "XHC1", "14", 0x8086, 0xA36D), "XHC1");
    outer.addChild("HS01", "", "AppleUSB20XHCIPort", {});
    outer.addChild("XHC1", "", "AppleUSBXHCIPCI", {}).addChild("HS09", "", "AppleUSB20XHCIPort", {});
    EXPECT_EQ(scan(), "8086:a36d XHC1@14  AppleIntelCNLUSBXHCI  pci8086,a36d  \"\"\n"
                      "  HS01  1  3  @  \"\"\n  HS09  9  3  @  \"\"\n"
                      "8086:a36d XHC2@20  AppleIntelCNLUSBXHCI  pci8086,a36d  \"\"\n");

    root = makeRoot();
    addXHCIPCIDevice(*root, "XHC2", "20", 0x8086, 0xA36D);
    addXHCIPCIDevice(*root, "XHC1", "14", 0x8086, 0xA36D);
    EXPECT_EQ(scan(), "8086:a36d XHC2@20    pci8086,a36d  \"\"\n")
        << "without services, which of like devices is which is unknowable: the first stays";
}

// Two chipset-style controllers both named XHC and a Thunderbolt XHC2: a
// reference names a controller, and of two of that name the one whose port
// points back wins; a table entry, a number given as a number, a name given
// as data, a Linux peer and a port that isn't there are all read.
TEST_F(NativeUSBTreeScannerTest, CompanionsResolveAcrossControllersAndFillTheUnnamedHalf) {
    auto companion = [](std::int64_t number, std::string controller) {
        PropertyDictionary entry{{"UsbCompanionPortNumber", ByteBuffer{std::uint8_t(number), 0, 0, 0}}};
        if (!controller.empty()) {
            entry["UsbCompanionControllerName"] = ByteBuffer(controller.begin(), controller.end());
        }
        return PropertyValue(std::move(entry));
    };
    auto port = [](NativeUSBNode& service, const std::string& name, std::uint8_t number,
                   PropertyDictionary more) {
        more["port"] = ByteBuffer{number, 0, 0, 0};
        service.addChild(name, "", "AppleUSB20XHCIPort", std::move(more));
    };
    auto& first = addService(addXHCIPCIDevice(*root, "XHC@14", "", 0x8086, 0x02ED), "XHC", "14000000");
    port(first, "HS01", 1, {{"UsbCompanionSS", companion(17, "")}});
    port(first, "HS02", 2, {{"UsbCompanionSS", companion(3, "XHC2")}});
    port(first, "SS01", 17, {});
    port(first, "HS03", 3, {}); // a port 3 on the first XHC too
    auto& second = addService(addXHCIPCIDevice(*root, "XHC@0", "", 0x8086, 0x15E9), "XHC", "00000000");
    port(second, "HS01", 1, {{"peer", "ss01"}});
    port(second, "HS02", 2, {{"UsbCompanionHS", PropertyDictionary{{"UsbCompanionPortNumber", 9}}}});
    port(second, "SS01", 3, {{"UsbCompanionHS", companion(4, "XHC")}});
    auto& thunderbolt = addService(addXHCIPCIDevice(*root, "XHC2@0", "", 0x8086, 0x15EC), "XHC2", "01000000");
    thunderbolt.properties.editableDictionary()["ports"] =
        PropertyDictionary{{"SSP1", PropertyDictionary{{"port", 3}}}};
    port(first, "HS04", 4, {{"UsbCompanionSS", companion(3, "XHC")}});
    std::string text = scan();
    std::string pairs;
    for (std::size_t at = text.find("  with"); at != std::string::npos; at = text.find("  with", at + 1)) {
        const std::size_t lineStart = text.rfind('\n', at) + 1;
        pairs += text.substr(lineStart + 2, 4) + text.substr(at, text.find('\n', at) - at) + "\n";
    }
    EXPECT_EQ(pairs, "HS01  with SS01\n"               // by number, own controller
                     "HS02  with XHC2@01000000 SSP1\n" // to a table port of another controller
                     "HS04  with XHC@00000000 SS01\n"  // of two XHC, the one pointing back
                     "SS01  with HS01\n"               // named by nobody, filled from HS01
                     "HS01  with SS01\n"               // a Linux peer
                     "SS01  with XHC@14000000 HS04\n"
                     "SSP1  with XHC@14000000 HS02\n")
        << text;
}

} // namespace
} // namespace korvane
