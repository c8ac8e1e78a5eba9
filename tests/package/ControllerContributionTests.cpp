#include "PackageTestSupport.h"
#include "package/ControllerContribution.h"
#include "package/PortsToWrite.h"
#include "records/PortNumber.h"

#include <gtest/gtest.h>

namespace korvane {
namespace {

USBPortMap port(const std::string& name, std::uint32_t number) {
    return makePort(name, portData(number));
}

// Each row also checks the line against what the writer is handed for the
// controller: the checked ports only, as a run copies them.
TEST(ControllerContribution, SaysWhatTheWriterWillWriteForTheController) {
    const auto intel =
        makeController("XHC1", 0x8086, 0xa36d, {port("HS01", 1), port("HS02", 2), port("HS02", 2)});
    const auto fresco = makeController("XHC1", 0x1b73, 0x1100, {port("HS01", 1)});
    const auto key = [](const USBControllerMap& controller, std::size_t index) {
        return usbPortStableID(controller, controller.ports[index]);
    };
    const std::tuple<const char*, USBControllerMap, std::set<std::string>, std::string> rows[] = {
        {"one checked", intel, {key(intel, 0)}, "1 port checked"},
        // Two ports share a key; the run keeps both.
        {"shared key", intel, {key(intel, 0), key(intel, 1)}, "3 ports checked"},
        {"a key of another controller",
         intel,
         {key(fresco, 0)},
         "no port checked: the built-in template's 24 ports will be written"},
        {"no template", fresco, {}, "support personality only"},
        {"no ports at all",
         makeController("XHC1", 0x1b21, 0x3241),
         {},
         "no port checked: the built-in template's 4 ports will be written"},
    };
    for (const auto& [name, controller, selected, text] : rows) {
        const ControllerContribution contribution = controllerContribution(controller, selected);
        EXPECT_EQ(contributionText(contribution), text) << name;

        USBControllerMap handedOver = controller;
        std::erase_if(handedOver.ports, [&](const USBPortMap& p) {
            return !selected.contains(usbPortStableID(controller, p));
        });
        EXPECT_EQ(contribution.portCount, portsToWrite(handedOver).ports.size()) << name;
    }
}

} // namespace
} // namespace korvane
