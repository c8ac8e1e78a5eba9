#include "CollectorFixture.h"

#include <gmock/gmock.h>

namespace korvane {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

USBControllerMap intel(std::vector<USBPortMap> ports) {
    return makeController("XHC", 0x8086, 0xa36d, std::move(ports));
}

// `count` ports HS01.., the first `active` of them with a device.
std::vector<USBPortMap> ports(int count, int active) {
    std::vector<USBPortMap> result;
    for (int i = 1; i <= count; ++i) {
        char name[16];
        std::snprintf(name, sizeof name, "HS%02d", i);
        result.push_back(
            makePort(name, static_cast<std::uint32_t>(i), i <= active ? "Device " + std::to_string(i) : ""));
    }
    return result;
}

class PortEditingTest : public CollectorFixture {};

TEST_F(PortEditingTest, ResetChecksExactlyTheActivePortsAndForgetsOverrides) {
    const auto controller =
        intel({makePort("HS01", 1, "Keyboard"), makePort("HS02", 2), makePort("HS03", 3, " \n")});
    scans = {{{controller}}, {{controller}}};
    model->scanUSBPorts();
    scheduler.runUntilIdle();
    model->setPortSelected(controller, controller.ports[1], true);
    model->setConnector(controller, controller.ports[0], 255);

    model->scanUSBPorts();
    scheduler.runUntilIdle();
    EXPECT_THAT(model->selectedPortIDs(), ElementsAre(usbPortStableID(controller, controller.ports[0])))
        << "blanks and line feeds are no device";
    EXPECT_THAT(model->connectorOverrides(), IsEmpty());
    EXPECT_THAT(
        logLines(),
        ElementsAre("Scanning USB controllers and ports for editing...",
                    "USB ports reset: 1 controller(s), 1 active USB port(s) selected automatically.",
                    "Scanning USB controllers and ports for editing...",
                    "USB ports reset: 1 controller(s), 1 active USB port(s) selected automatically."));
}

TEST_F(PortEditingTest, SilentRefreshKeepsTheUsersWorkAndStaleKeys) {
    auto before = intel({makePort("HS01", 1, "Keyboard"), makePort("HS02", 2), makePort("HS03", 3)});
    scans = {{{before}}};
    model->scanUSBPorts();
    scheduler.runUntilIdle();
    model->setPortSelected(before, before.ports[1], true);  // checked, empty
    model->setPortSelected(before, before.ports[0], false); // unchecked, has a device
    model->setConnector(before, before.ports[2], 10);
    const auto logSize = model->logText().size();

    // HS03 vanishes for a while, HS02 gets a device.
    auto during = intel({makePort("HS01", 1, "Keyboard"), makePort("HS02", 2, "Stick")});
    scans = {{{during}}, {{before}}};
    model->refreshActiveUSBDevices();
    scheduler.runUntilIdle();
    const auto key = [&](int i) {
        return usbPortStableID(before, before.ports[static_cast<std::size_t>(i)]);
    };
    EXPECT_THAT(model->selectedPortIDs(), ElementsAre(key(0), key(1)));
    EXPECT_EQ(model->connectorOverrides().at(key(2)), 10) << "a stale override stays";

    model->refreshActiveUSBDevices();
    scheduler.runUntilIdle();
    EXPECT_EQ(model->connectorFor(before, before.ports[2]), 10) << "and applies again when the port returns";
    EXPECT_EQ(model->logText().size(), logSize) << "silent means silent";
    EXPECT_FALSE(model->isScanningUSB());
}

TEST_F(PortEditingTest, ControllersWithoutPortsTakeTheirTemplateUnchecked) {
    auto bare = intel({});
    auto other = makeController("XHC9", 0x1234, 0x5678, {});
    scans = {{{bare, other}}};
    model->scanUSBPorts();
    scheduler.runUntilIdle();
    ASSERT_EQ(model->scannedControllers().size(), 2u);
    EXPECT_FALSE(model->scannedControllers()[0].ports.empty()) << "8086:a36d has a built-in template";
    EXPECT_EQ(model->scannedControllers()[0].ports[0].location, "template");
    EXPECT_TRUE(model->scannedControllers()[1].ports.empty());
    EXPECT_THAT(model->selectedPortIDs(), IsEmpty());
    EXPECT_EQ(logLines().back(),
              "USB ports reset: 2 controller(s), 0 active USB port(s) selected automatically.");
}

TEST_F(PortEditingTest, GuardedRequestsAreDroppedWhileAScanRuns) {
    scans = {{{intel(ports(2, 1))}}};
    model->scanUSBPorts();
    model->scanUSBPorts();
    model->refreshActiveUSBDevices();
    model->updateIDsDatabases();
    EXPECT_EQ(scheduler.pendingBackgroundTasks(), 1u);
    EXPECT_THAT(scheduler.backgroundPriorities(), ElementsAre(Scheduler::Priority::userInitiated));
    EXPECT_TRUE(model->isScanningUSB());
    scheduler.runUntilIdle();
    EXPECT_EQ(scanCount, 1);
    EXPECT_FALSE(model->isScanningUSB());
}

TEST_F(PortEditingTest, ScansDuringARunAreDropped) {
    model->startCollection();
    model->scanUSBPorts();
    model->refreshActiveUSBDevices();
    EXPECT_FALSE(model->isScanningUSB());
    EXPECT_EQ(scheduler.pendingBackgroundTasks(), 1u) << "only the run";
}

TEST_F(PortEditingTest, TheWarningFiresWhenASelectionReachesFifteen) {
    const auto controller = intel(ports(20, 0));
    scans = {{{controller}}};
    model->scanUSBPorts();
    scheduler.runUntilIdle();
    for (int i = 0; i < 14; ++i) {
        model->setPortSelected(controller, controller.ports[static_cast<std::size_t>(i)], true);
    }
    EXPECT_FALSE(model->showPortLimitWarning());
    model->setPortSelected(controller, controller.ports[14], true);
    EXPECT_TRUE(model->showPortLimitWarning());
    model->dismissPortLimitWarning();
    model->setPortSelected(controller, controller.ports[15], true);
    model->setPortSelected(controller, controller.ports[15], false);
    EXPECT_FALSE(model->showPortLimitWarning()) << "16th and deselecting don't";
    model->setPortSelected(controller, controller.ports[14], false);
    model->setPortSelected(controller, controller.ports[14], true);
    EXPECT_TRUE(model->showPortLimitWarning()) << "dropping below and reaching it again does";
}

TEST_F(PortEditingTest, ScanWarningsCompareWithTheCountsFromBeforeTheScan) {
    scans = {{{intel(ports(16, 15))}}, {{intel(ports(16, 15))}}};
    model->scanUSBPorts();
    scheduler.runUntilIdle();
    EXPECT_TRUE(model->showPortLimitWarning()) << "a first scan has no previous count";
    model->dismissPortLimitWarning();
    model->refreshActiveUSBDevices();
    scheduler.runUntilIdle();
    EXPECT_FALSE(model->showPortLimitWarning()) << "already at 15 before";
}

TEST_F(PortEditingTest, SelectAllWarnsOnceForManyControllers) {
    auto second = makeController("XHCI", 0x8086, 0x15ec, ports(20, 0));
    second.location = "0";
    scans = {{{intel(ports(20, 3)), second}}};
    model->scanUSBPorts();
    scheduler.runUntilIdle();
    model->selectAllPorts();
    EXPECT_TRUE(model->showPortLimitWarning());
    EXPECT_EQ(model->selectedPortIDs().size(), 40u);
    model->dismissPortLimitWarning();
    model->selectAllPorts();
    EXPECT_FALSE(model->showPortLimitWarning());
    model->deselectAllPorts();
    EXPECT_THAT(model->selectedPortIDs(), IsEmpty());
    EXPECT_FALSE(model->showPortLimitWarning());
}

struct EligibilityCase {
    const char* label;
    std::int64_t vendor;
    const char* name;
    const char* match;
    const char* location;
    bool eligible;
};

class PortLimitEligibilityTest : public testing::TestWithParam<EligibilityCase> {};

TEST_P(PortLimitEligibilityTest, WholeWordXHCOrXHCIOnIntel) {
    auto controller = makeController(GetParam().name, GetParam().vendor, 0x1, {});
    controller.ioNameMatch = GetParam().match;
    controller.location = GetParam().location;
    EXPECT_EQ(shouldWarnAboutSystemPortLimit(controller), GetParam().eligible);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, PortLimitEligibilityTest,
    testing::Values(EligibilityCase{"AtSign", 0x8086, "XHC@14", "", "", true},
                    EligibilityCase{"LowerCase", 0x8086, "xhci", "", "", true},
                    EligibilityCase{"Path", 0x8086, "PCI0/XHCI", "", "", true},
                    EligibilityCase{"Words", 0x8086, "Intel XHCI Controller", "", "", true},
                    EligibilityCase{"Numbered", 0x8086, "XHC1", "pci8086,a36d", "14", false},
                    EligibilityCase{"Glued", 0x8086, "AppleIntelXHCI", "XHCI1", "", false},
                    EligibilityCase{"FromLocation", 0x8086, "EHC1", "pci8086,1", "PCI0:XHC", true},
                    EligibilityCase{"OtherVendor", 0x1b73, "XHCI", "", "", false}),
    [](const auto& row) { return std::string(row.param.label); });

TEST_F(PortEditingTest, HotplugBurstGivesOneSilentRefreshAfterTheLastEvent) {
    scans = {{{intel(ports(2, 0))}}};
    model->startUSBHotplugMonitoring();
    model->startUSBHotplugMonitoring();
    EXPECT_EQ(hotplug->starts, 1);

    for (int i = 0; i < 10; ++i) {
        hotplug->onChange();
        scheduler.advance(Scheduler::Seconds(0.01));
    }
    // The tenth event came at 0.09 s and the clock stands at 0.10 s.
    scheduler.advance(Scheduler::Seconds(0.169));
    EXPECT_EQ(scanCount, 0) << "not before 0.18 s after the tenth event";
    scheduler.advance(Scheduler::Seconds(0.002));
    EXPECT_EQ(scanCount, 1);
    EXPECT_THAT(model->logText(), IsEmpty());
}

TEST_F(PortEditingTest, HotplugRefreshIsDroppedWhenItFiresDuringAScan) {
    scans = {{{intel(ports(2, 0))}}};
    model->startUSBHotplugMonitoring();
    hotplug->onChange();
    scheduler.advance(Scheduler::Seconds(0.2));
    EXPECT_EQ(scanCount, 1);

    model->scanUSBPorts(); // still queued when the next refresh fires
    hotplug->onChange();
    EXPECT_TRUE(model->isScanningUSB());
    // Fire the timer without running the queued scan first.
    scheduler.advance(Scheduler::Seconds(0.2));
    EXPECT_EQ(scanCount, 2) << "the reset ran, the refresh that fired during it was dropped";
}

TEST_F(PortEditingTest, ALateTimerFindsTheModelGoneAndDoesNothing) {
    model->startUSBHotplugMonitoring();
    hotplug->onChange();
    std::weak_ptr<CollectorModel> weak = model;
    model.reset();
    EXPECT_TRUE(weak.expired());
    scheduler.advance(Scheduler::Seconds(1));
    EXPECT_EQ(scanCount, 0);
}

} // namespace
} // namespace korvane
