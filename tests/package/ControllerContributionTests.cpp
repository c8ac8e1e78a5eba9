#include "PackageTestSupport.h"
#include "package/ControllerContribution.h"
#include "package/PortsToWrite.h"

#include <gtest/gtest.h>

namespace korvane {
namespace {

// Each row also checks the count against what the writer is handed for the
// controller: the checked ports only, as a run copies them.
TEST(ControllerContribution, SaysWhatTheWriterWillWriteForTheController) {
    const auto hs02 = makePort("HS02", 2);
    // Two ports share a key; the run keeps both.
    const auto intel = makeController("XHC1", 0x8086, 0xa36d, {makePort("HS01", 1), hs02, hs02});
    const auto fresco = makeController("XHC1", 0x1b73, 0x1100, {hs02});
    const std::string template24 = "no port checked: the built-in template's 24 ports will be written";
    const std::tuple<USBControllerMap, std::string, std::string> rows[] = {
        {intel, usbPortStableID(intel, hs02), "2 ports checked"},
        {intel, usbPortStableID(fresco, hs02), template24}, // another controller's key
        {fresco, "", "support personality only"},
        {makeController("XHC1", 0x1b21, 0x3241), "",
         "no port checked: the built-in template's 4 ports will be written"},
    };
    for (const auto& [controller, selected, text] : rows) {
        const ControllerContribution contribution = controllerContribution(controller, {selected});
        EXPECT_EQ(contributionText(contribution), text);
        USBControllerMap handedOver = controller;
        std::erase_if(handedOver.ports,
                      [&controller = controller, &selected = selected](const USBPortMap& port) {
                          return usbPortStableID(controller, port) != selected;
                      });
        EXPECT_EQ(contribution.portCount, portsToWrite(handedOver).ports.size()) << text;
    }
}

} // namespace
} // namespace korvane
