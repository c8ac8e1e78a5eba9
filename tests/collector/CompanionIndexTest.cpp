#include "collector/CompanionIndex.h"

#include "support/USBRecords.h"

#include <gtest/gtest.h>

namespace korvane {
namespace {

// XHC1's HS01 pairs with XHC2's SS01 across controllers, its HS02 with its
// own SS02 (which names none back), HS03 with a port no scan has.
std::vector<USBControllerMap> machine() {
    auto xhc1 =
        makeController("XHC1", 0x8086, 0xa36d,
                       {makePort("HS01", 1), makePort("HS02", 2), makePort("SS02", 18), makePort("HS03", 3)});
    auto xhc2 = makeController("XHC2", 0x8086, 0x15ec, {makePort("SS01", 3)});
    xhc1.ports[0].companionKey = usbPortStableID(xhc2, xhc2.ports[0]);
    xhc2.ports[0].companionKey = usbPortStableID(xhc1, xhc1.ports[0]);
    xhc1.ports[1].companionKey = usbPortStableID(xhc1, xhc1.ports[2]);
    xhc1.ports[3].companionKey = "8086:a36d|XHC1||SS03|13000000";
    return {xhc1, xhc2};
}

TEST(CompanionIndex, FindsTheOtherHalfByItsKeyAndNamesItAsTheListsShowIt) {
    const auto controllers = machine();
    const CompanionIndex index(controllers);
    const auto& xhc1 = controllers[0];
    const auto& xhc2 = controllers[1];
    const std::tuple<const USBControllerMap*, std::size_t, const USBPortMap*, const char*> rows[] = {
        {&xhc1, 0, &xhc2.ports[0], "XHC2 SS01"},
        {&xhc2, 0, &xhc1.ports[0], "XHC1 HS01"},
        {&xhc1, 1, &xhc1.ports[2], "SS02"},
        {&xhc1, 2, nullptr, ""}, // names none itself
        {&xhc1, 3, nullptr, ""}, // names one the scan doesn't have
    };
    for (const auto& [controller, port, companion, name] : rows) {
        const auto found = index.companionOf(controller->ports[port]);
        EXPECT_EQ(found ? found->port : nullptr, companion) << controller->name << " " << port;
        EXPECT_EQ(index.companionName(*controller, controller->ports[port]), name);
    }
    EXPECT_FALSE(CompanionIndex().companionOf(xhc1.ports[0])) << "an empty index knows none";
}

} // namespace
} // namespace korvane
