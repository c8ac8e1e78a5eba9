#include "records/USBControllerMap.h"
#include "scanner/PropertyReaders.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace korvane {
namespace {

TEST(NameOrdering, ReadsDigitRunsAsNumbersAndIgnoresCase) {
    EXPECT_TRUE(localizedStandardLess("2", "10"));
    EXPECT_FALSE(localizedStandardLess("10", "2"));
    EXPECT_TRUE(localizedStandardLess("HS1", "HS02"));
    EXPECT_TRUE(localizedStandardLess("hs2", "HS10"));
    EXPECT_TRUE(localizedStandardLess("HS10", "ss1"));
}

TEST(NameOrdering, IsATotalOrderEvenForTextsTheCollationCallsEqual) {
    std::vector<std::string> names{"HS10", "hs1", "HS2", "HS1", "Hs1", "HS01", std::string("\xFF\xFE", 2)};
    std::vector<std::string> reversed(names.rbegin(), names.rend());
    auto less = [](const auto& a, const auto& b) { return localizedStandardLess(a, b); };
    std::sort(names.begin(), names.end(), less);
    std::sort(reversed.begin(), reversed.end(), less);
    EXPECT_EQ(names, reversed);
    for (const auto& name : names) {
        EXPECT_FALSE(localizedStandardLess(name, name));
    }
}

// Both scanners hand controllers out in this one order; the name decides only
// where the line reader finds two controllers of one ID at one location.
TEST(NameOrdering, ControllersGoByVendorDeviceLocationThenName) {
    auto controller = [](std::int64_t vendor, std::int64_t device, std::string location, std::string name) {
        return USBControllerMap{std::move(name), std::move(location), vendor, device, "", "", "", {}};
    };
    std::vector<USBControllerMap> controllers{
        controller(0x8086, 0x15ec, "0", "XHC2"),  controller(0x1b21, 0x2142, "0", "XHC3"),
        controller(0x8086, 0xa36d, "14", "XHC1"), controller(0x8086, 0x15ec, "10", "XHC10"),
        controller(0x8086, 0x15ec, "10", "XHC9"), controller(0x8086, 0x15ec, "9", "XHC4")};
    sortControllersByIDsThenLocation(controllers);
    std::string order;
    for (const auto& map : controllers) {
        order += map.name + " ";
    }
    EXPECT_EQ(order, "XHC3 XHC2 XHC4 XHC9 XHC10 XHC1 ");
}

} // namespace
} // namespace korvane
