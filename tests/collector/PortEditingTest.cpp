#include "support/ModelFixture.h"

#include <gmock/gmock.h>

namespace korvane {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

USBControllerMap intel(std::vector<USBPortMap> ports) {
    return makeController("XHC", 0x8086, 0xa36d, std::move(ports));
}

std::string key(const USBControllerMap& controller, std::size_t port) {
    return usbPortStableID(controller, controller.ports[port]);
}

using PortEditingTest = ModelFixture;

// A reset checks exactly the active ports, and a device in either half keeps
// the whole socket: it checks the other half, across controllers too, with
// one line per pair so checked; a port left without its other half is named
// with what stops working. A second reset forgets the user's edits.
TEST_F(PortEditingTest, AResetChecksTheActivePortsAndTheirCompanions) {
    auto xhc1 =
        intel({makePort("HS01", 1, "Stick"), makePort("HS02", 2, "Mouse"), makePort("SS02", 18, "Disk"),
               makePort("HS03", 3, "Camera"), makePort("HS04", 4, " \n")});
    auto xhc2 = makeController("XHC2", 0x8086, 0x15ec, {makePort("SS01", 3)});
    xhc1.ports[0].companionKey = key(xhc2, 0);
    xhc2.ports[0].companionKey = key(xhc1, 0);
    xhc1.ports[1].companionKey = key(xhc1, 2);
    xhc1.ports[2].companionKey = key(xhc1, 1);
    scanShowing({xhc1, xhc2});
    EXPECT_EQ(model->selectedPortIDs().size(), 5u) << "blanks and line feeds are no device";
    EXPECT_TRUE(model->isPortSelected(xhc2, xhc2.ports[0]));
    EXPECT_THAT(logLines(), ElementsAre("Scanning USB controllers and ports for editing...",
                                        "HS01 has a device: its companion XHC2 SS01 is checked too.",
                                        "USB ports reset: 2 controller(s), 4 active USB port(s) selected "
                                        "automatically."))
        << "HS02 and SS02 both have a device";
    EXPECT_FALSE(model->hasUnsavedChanges()) << "what a reset checks is no work to lose";
    EXPECT_THAT(model->portsKeptWithoutCompanion(), IsEmpty());

    model->setPortSelected(xhc2, xhc2.ports[0], false);
    model->setPortSelected(xhc1, xhc1.ports[1], false);
    EXPECT_THAT(
        model->portsKeptWithoutCompanion(),
        ElementsAre("HS01 is kept without its USB 3 half XHC2 SS01: USB 3 devices in that socket will "
                    "run at USB 2 speed",
                    "SS02 is kept without its USB 2 half HS02: USB 2 devices in that socket will not work"));
    model->setConnector(xhc1, xhc1.ports[4], 255);
    model->setPortSelected(xhc1, xhc1.ports[4], true);
    scanShowing({xhc1, xhc2});
    EXPECT_EQ(model->selectedPortIDs().size(), 5u);
    EXPECT_THAT(model->connectorOverrides(), IsEmpty());
}

// XHC1's HS01 pairs with XHC2's SS01 across controllers, its HS02 with its own SS02.
TEST_F(PortEditingTest, CompanionsTakeAPickTogetherWhenAskedAndResetForgetsTheLink) {
    auto xhc1 = intel({makePort("HS01", 1), makePort("HS02", 2), makePort("SS02", 18)});
    auto xhc2 = makeController("XHC2", 0x8086, 0x15ec, {makePort("SS01", 3, "", 9)});
    xhc1.ports[0].companionKey = key(xhc2, 0);
    xhc2.ports[0].companionKey = key(xhc1, 0);
    xhc1.ports[1].companionKey = key(xhc1, 2);
    scanShowing({xhc1, xhc2});
    EXPECT_EQ(model->companionText(xhc1, xhc1.ports[0]), "with XHC2 SS01");

    model->setConnectorWithCompanion(xhc1, xhc1.ports[1], 10);
    EXPECT_EQ(model->connectorFor(xhc1, xhc1.ports[2]), 10);
    model->setConnector(xhc1, xhc1.ports[0], 0);
    EXPECT_EQ(model->connectorFor(xhc2, xhc2.ports[0]), 9) << "a single pick stays single";

    model->setSameTypeForCompanion(xhc2, xhc2.ports[0], true);
    EXPECT_EQ(model->connectorFor(xhc1, xhc1.ports[0]), 9) << "turning it on gives the companion this type";
    EXPECT_TRUE(model->isSameTypeForCompanion(xhc1, xhc1.ports[0]));
    model->setConnector(xhc1, xhc1.ports[0], 255);
    EXPECT_EQ(model->connectorFor(xhc2, xhc2.ports[0]), 255) << "a pick on either half goes to both";
    model->setSameTypeForCompanion(xhc1, xhc1.ports[0], false);
    model->setConnector(xhc1, xhc1.ports[0], 3);
    EXPECT_EQ(model->connectorFor(xhc2, xhc2.ports[0]), 255);

    model->setSameTypeForCompanion(xhc1, xhc1.ports[0], true);
    scanShowing({xhc1, xhc2});
    EXPECT_THAT(model->sameTypeForCompanionPortIDs(), IsEmpty()) << "Reset Ports forgets the link";
}

TEST_F(PortEditingTest, ASilentRefreshKeepsTheUsersWorkAndStaleKeys) {
    auto before = intel({makePort("HS01", 1, "Keyboard"), makePort("HS02", 2), makePort("HS03", 3)});
    scanShowing({before});
    model->setPortSelected(before, before.ports[1], true);  // checked, empty
    model->setPortSelected(before, before.ports[0], false); // unchecked, has a device
    model->setPortSelected(before, before.ports[2], true);  // checked, about to vanish
    model->setConnector(before, before.ports[2], 10);
    const auto logSize = model->logText().size();

    // HS03 vanishes for a while, HS02 gets a device.
    scans = {{{intel({makePort("HS01", 1, "Keyboard"), makePort("HS02", 2, "Stick")})}}, {{before}}};
    model->refreshActiveUSBDevices();
    scheduler.runUntilIdle();
    EXPECT_THAT(model->selectedPortIDs(), ElementsAre(key(before, 0), key(before, 1), key(before, 2)))
        << "active ports are checked again; the vanished port's key stays";
    EXPECT_EQ(model->connectorOverrides().at(key(before, 2)), 10) << "a stale override stays";
    model->refreshActiveUSBDevices();
    scheduler.runUntilIdle();
    EXPECT_EQ(model->connectorFor(before, before.ports[2]), 10) << "and applies again when the port returns";
    EXPECT_EQ(model->logText().size(), logSize) << "silent means silent";
}

TEST_F(PortEditingTest, ControllersWithoutPortsTakeTheirTemplateUnchecked) {
    scanShowing({intel({}), makeController("XHC9", 0x1234, 0x5678)});
    ASSERT_EQ(model->scannedControllers().size(), 2u);
    EXPECT_EQ(model->scannedControllers()[0].ports.size(), 24u) << "8086:a36d has a built-in template";
    EXPECT_TRUE(model->scannedControllers()[1].ports.empty());
    EXPECT_THAT(model->selectedPortIDs(), IsEmpty());
}

TEST_F(PortEditingTest, RequestsThatFindTheModelBusyAreDropped) {
    scans = {{{intel(makePorts(2, 1))}}};
    model->scanUSBPorts();
    model->scanUSBPorts();
    model->refreshActiveUSBDevices();
    model->updateIDsDatabases();
    EXPECT_THAT(scheduler.backgroundPriorities(), ElementsAre(Scheduler::Priority::userInitiated));
    scheduler.runUntilIdle();
    EXPECT_EQ(scanCount, 1);

    model->startCollection();
    model->scanUSBPorts();
    model->refreshActiveUSBDevices();
    EXPECT_FALSE(model->isScanningUSB());
    EXPECT_EQ(scheduler.pendingBackgroundTasks(), 1u) << "only the run";
}

// The warning fires when an Intel controller's selection reaches 15 from
// below, whether a scan, Select All or a single check takes it there.
TEST_F(PortEditingTest, ThePortLimitWarningFiresWhereTheCountReachesFifteenFromBelow) {
    const auto controller = intel(makePorts(16, 15));
    scanShowing({controller});
    EXPECT_TRUE(model->showPortLimitWarning()) << "a first scan has no previous count";
    model->dismissPortLimitWarning();
    model->refreshActiveUSBDevices();
    scheduler.runUntilIdle();
    EXPECT_FALSE(model->showPortLimitWarning()) << "already at 15 before";
    model->selectAllPorts();
    EXPECT_FALSE(model->showPortLimitWarning());
    model->deselectAllPorts();
    model->selectAllPorts();
    EXPECT_TRUE(model->showPortLimitWarning());

    model->dismissPortLimitWarning();
    model->setPortSelected(controller, controller.ports[15], false);
    EXPECT_FALSE(model->showPortLimitWarning()) << "deselecting doesn't";
    model->setPortSelected(controller, controller.ports[14], false);
    model->setPortSelected(controller, controller.ports[14], true);
    EXPECT_TRUE(model->showPortLimitWarning()) << "dropping below and reaching it again does";
    model->dismissPortLimitWarning();
    model->setPortSelected(controller, controller.ports[15], true);
    EXPECT_FALSE(model->showPortLimitWarning()) << "a 16th port doesn't";
}

TEST(PortLimit, OnlyIntelControllersNamedXHCOrXHCIAsAWholeWordAreEligible) {
    const std::tuple<std::int64_t, const char*, const char*, const char*, bool> rows[] = {
        {0x8086, "XHC@14", "", "", true},
        {0x8086, "PCI0/xhci", "", "", true},
        {0x8086, "XHC1", "pci8086,a36d", "14", false},
        {0x8086, "AppleIntelXHCI", "XHCI1", "", false},
        {0x8086, "EHC1", "pci8086,1", "PCI0:XHC", true},
        {0x1b73, "XHCI", "", "", false},
        {0x8086, "Intel\tXHCI", "", "", false},
    };
    for (const auto& [vendor, name, match, location, isEligible] : rows) {
        auto controller = makeController(name, vendor, 0x1);
        controller.ioNameMatch = match;
        controller.location = location;
        EXPECT_EQ(shouldWarnAboutSystemPortLimit(controller), isEligible) << name;
    }
}

// What the refresh sees plugged in is checked and remembered as seen, work
// the user would lose; a port emptied again stays so.
TEST_F(PortEditingTest, AHotplugBurstGivesOneSilentRefreshAfterTheLastEventAndChecksWhatIsPluggedIn) {
    const auto empty = intel(makePorts(2, 0));
    auto plugged = empty;
    plugged.ports[1].activeDevice = "SanDisk Ultra";
    scanShowing({empty});
    ASSERT_FALSE(model->hasUnsavedChanges());
    const auto log = model->logText();
    scans = {{{plugged}}, {{empty}}};
    model->startUSBHotplugMonitoring();
    model->startUSBHotplugMonitoring();
    EXPECT_EQ(hotplug->starts, 1);
    for (int i = 0; i < 10; ++i) {
        hotplug->onChange();
        scheduler.advance(Scheduler::Seconds(0.01));
    }
    // The tenth event came at 0.09 s and the clock stands at 0.10 s.
    scheduler.advance(Scheduler::Seconds(0.169));
    EXPECT_EQ(scanCount, 1) << "not before 0.18 s after the tenth event";
    scheduler.advance(Scheduler::Seconds(0.002));
    EXPECT_EQ(scanCount, 2);
    hotplug->onChange();
    scheduler.advance(CollectorModel::hotplugDebounce);
    EXPECT_EQ(model->logText(), log);
    EXPECT_THAT(model->selectedPortIDs(), ElementsAre(key(empty, 1)));
    EXPECT_EQ(model->seenTextFor(empty, empty.ports[1]), "seen: SanDisk Ultra, 14:03");
    EXPECT_TRUE(model->hasUnsavedChanges());
}

// The model may go while a refresh is due or while an event still waits on
// the main queue, as the platform sources post it: neither scans.
TEST_F(PortEditingTest, ARefreshOrEventDueAfterTheModelIsGoneDoesNothing) {
    for (const bool queued : {false, true}) {
        SetUp();
        model->startUSBHotplugMonitoring();
        queued ? scheduler.postToMain(hotplug->onChange) : hotplug->onChange();
        std::weak_ptr<CollectorModel> weak = model;
        model.reset();
        EXPECT_TRUE(weak.expired()) << "the pending refresh holds no model";
        scheduler.runUntilIdle();
        scheduler.advance(Scheduler::Seconds(1));
        EXPECT_EQ(scanCount, 0) << queued;
    }
}

} // namespace
} // namespace korvane
