#include "PackageTestSupport.h"
#include "package/GenerationReport.h"

#include <gtest/gtest.h>

namespace korvane {
namespace {

using namespace korvane;

const std::string preface =
    "Korvane.kext generated automatically.\n"
    "Format: native dynamic AppleUSBHostMergeProperties / IOProviderMergeProperties.\n"
    "Includes only dynamic AppleUSBXHCIPCI support personalities for USB controller PCI IDs detected on this "
    "machine.\n"
    "Primary source: native IOKit IORegistry scan, the same live registry layer used by macOS tools. No "
    "saved "
    ".ioreg is used.\n"
    "No static controller database is injected; every support match is generated from this machine's "
    "detected "
    "USB controller PCI IDs.\n"
    "USB controller personalities also include IOPCIPauseCompatible and IOPCITunnelCompatible for better "
    "wake/tunnel stability on modern Intel/TB controllers.\n"
    "Controller discovery is USB-controller PCI class + AppleUSBXHCI* based; IONameMatch is the discovered "
    "name, "
    "not a hardcoded TXHC/XHCI assumption.\n"
    "The 15-port macOS limit is not enforced by this generator.\n"
    "Each port contains exactly: UsbConnector, name, port, usb-port-number, usb-port-type.\n"
    "\n";

TEST(GenerationReport, OwnPortsSortedWithBlanksEmptyFieldsAndActiveDevice) {
    auto controller = makeController("XHC1", 0x8086, 0xa36d,
                                     {makePort("SS01", {0x11, 0, 0, 0}, 3, "14100000"),
                                      makePort("HS03", {3, 0, 0, 0}, 9, "14300000", "  Ultra Fit  "),
                                      makePort("NUL", {}, 255, ""), makePort("HS03", {3, 0, 0, 0}, 0, "x")});
    controller.location = "";
    controller.providerClass = "";
    EXPECT_EQ(generationReportText({controller}),
              preface + "Controller: XHC1@\n"
                        "  PCI ID: 8086:a36d\n"
                        "  Provider Class: \n"
                        "  Match: IONameMatch=XHC1 IOPCIPrimaryMatch=0xa36d8086\n"
                        "  Ports: 4\n"
                        "  NUL@  port=  UsbConnector=255\n"
                        "  HS03@14300000  port=03000000  UsbConnector=9 active=  Ultra Fit  \n"
                        "  HS03@x  port=03000000  UsbConnector=0\n"
                        "  SS01@14100000  port=11000000  UsbConnector=3\n");
}

TEST(GenerationReport, TemplateFallbackCountsTemplatePortsNotTemplateCount) {
    auto controller = makeController("XHC1", 0x8086, 0x9cb1);
    controller.location = "14";
    controller.providerClass = "AppleUSBXHCILPTH";
    const std::string text = generationReportText({controller});
    EXPECT_NE(text.find("Controller: XHC1@14\n"
                        "  PCI ID: 8086:9cb1\n"
                        "  Provider Class: AppleUSBXHCILPTH\n"
                        "  Match: IONameMatch=XHC1 IOPCIPrimaryMatch=0x9cb18086\n"
                        "  Ports: 15 generated from internal controller template fallback.\n"
                        "  HS01@template  port=01000000  UsbConnector=3\n"),
              std::string::npos)
        << text;
    // The last block's empty line is the last element joined, so the text
    // ends in exactly one line feed.
    EXPECT_TRUE(text.ends_with("  SS04@template  port=0f000000  UsbConnector=3\n")) << text;
    EXPECT_FALSE(text.ends_with("\n\n"));
}

TEST(GenerationReport, ListsControllersTheKextSkipsAndEndsInOneLineFeed) {
    const std::string noPorts = "  Ports: 0 - support personality only; no usable USB port tree or fallback "
                                "template was available during collection.\n";
    EXPECT_EQ(generationReportText({makeController("", 0, 0x1234), makeController("", 0, 0x1234)}),
              preface +
                  "Controller: @\n  PCI ID: 0000:1234\n  Provider Class: \n"
                  "  Match: IONameMatch= IOPCIPrimaryMatch=0x12340000\n" +
                  noPorts + "\n" +
                  "Controller: @\n  PCI ID: 0000:1234\n  Provider Class: \n"
                  "  Match: IONameMatch= IOPCIPrimaryMatch=0x12340000\n" +
                  noPorts);
}

} // namespace
} // namespace korvane
