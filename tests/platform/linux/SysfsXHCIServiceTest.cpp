#include "platform/linux/SysfsXHCIService.h"

#include "linux/SysfsTree.h"
#include "support/TempFolder.h"

#include <gtest/gtest.h>

namespace korvane {
namespace {

const std::filesystem::path controller = "devices/pci0000:00/0000:00:14.0";

// An Intel-style controller: 3 USB 2 ports, 2 USB 3 ports, firmware data for
// some of them only (tests/data/linux/handmade/intel-xhci.tree).
class SysfsXHCIServiceTest : public ::testing::Test {
  protected:
    void SetUp() override { writeSysfsTree(folder_.path(), "intel-xhci.tree"); }

    std::vector<SysfsXHCIService::RootPort> rootPorts() const {
        const SysfsPCIDevice device(folder_.path() / controller, *PCIAddress::parse("0000:00:14.0"));
        return SysfsXHCIService(device, folder_.path() / "kernel/debug", 0x14000000).rootPorts();
    }

    TempFolder folder_;
};

TEST_F(SysfsXHCIServiceTest, PortsTakeFirmwareFactsAndGuessOnlyWhereNoneExist) {
    using Source = SysfsXHCIService::NumberSource;
    using Row = std::tuple<std::string, std::uint32_t, Source, std::optional<std::int64_t>, std::string>;
    std::vector<Row> ports;
    for (const auto& port : rootPorts()) {
        ports.emplace_back(port.name, port.number, port.numberSource, port.connector, port.peerName);
    }
    EXPECT_EQ(ports, (std::vector<Row>{
                         {"HS01", 1, Source::firmware, 3, "SS01"},      // hotplug with a USB 3 peer
                         {"HS02", 2, Source::rootHubPosition, 255, ""}, // hardwired
                         {"HS03", 3, Source::rootHubPosition, 0, ""},   // hotplug, no peer: USB 2 only
                         {"SS01", 17, Source::firmware, 3, "HS01"},
                         {"SS02", 5, Source::rootHubPosition, 255, ""}, // 2 + the 3 USB 2 ports; hardwired
                     }));
}

TEST_F(SysfsXHCIServiceTest, DebugfsNumbersWinOverTheGuessButNotOverFirmware) {
    // The USB 3 ports first, as on QEMU: USB 3 at 1-2, USB 2 at 3-5.
    writeSysfsTree(folder_.path(), "intel-xhci-debugfs.tree");
    std::vector<std::uint32_t> numbers;
    for (const auto& port : rootPorts()) {
        numbers.push_back(port.number);
    }
    EXPECT_EQ(numbers, (std::vector<std::uint32_t>{1, 4, 5, 17, 2}));
}

// Two Thunderbolt controllers at device 0 behind two bridges, the chipset's
// at 0x14 and a card at device 1: the card keeps its own value, the second
// Thunderbolt controller takes the next free one after it.
TEST(UniqueControllerLocationIDs, TheDeviceNumberIsTheTopByteAndTheNextFreeOneWhenTaken) {
    std::vector<PCIAddress> controllers;
    for (const char* name : {"0000:00:14.0", "0000:39:00.0", "0000:3a:00.0", "0000:05:01.0"}) {
        controllers.push_back(*PCIAddress::parse(name));
    }
    EXPECT_EQ(uniqueControllerLocationIDs(controllers),
              (std::vector<std::uint32_t>{0x14000000, 0x00000000, 0x02000000, 0x01000000}));
}

} // namespace
} // namespace korvane
