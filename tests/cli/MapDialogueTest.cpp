#include "cli/MapDialogue.h"

#include "mapfile/MapFileCodec.h"
#include "support/ModelFixture.h"

#include <gmock/gmock.h>

namespace korvane {
namespace {

// XHC1: HS01, HS02 and their SuperSpeed halves SS01, SS02.
USBControllerMap xhc1(const std::string& busyPort = "", const std::string& device = "") {
    auto controller = makeController(
        "XHC1", 0x8086, 0xa36d,
        {makePort("HS01", 1), makePort("HS02", 2), makePort("SS01", 17), makePort("SS02", 18)});
    for (std::size_t i = 0; i < 2; ++i) {
        controller.ports[i].companionKey = usbPortStableID(controller, controller.ports[i + 2]);
        controller.ports[i + 2].companionKey = usbPortStableID(controller, controller.ports[i]);
    }
    for (auto& port : controller.ports) {
        if (port.name == busyPort) {
            port.activeDevice = device;
        }
    }
    return controller;
}

class MapDialogueTest : public ModelFixture {
  protected:
    void plug(const std::string& port, const std::string& device) {
        scans.push_back({{xhc1(port, device)}});
        hotplug->onChange();
        scheduler.advance(Scheduler::Seconds{0.2});
    }
};

// A script that writes every name before the devices come, as a pipe does:
// each name waits for a socket that asks for one (the other half of a named
// socket asks none), and the transcript is the terminal's.
TEST_F(MapDialogueTest, NamesWrittenAheadWaitForTheirSocketsAndTheEndSavesAndSums) {
    scanShowing({xhc1()});
    model->startUSBHotplugMonitoring();
    const auto mapFile = home.path() / "plugged.korvanemap";
    PluggingSession plugging(model, mapFile);
    std::ostringstream out;
    MapDialogue dialogue(plugging, out);
    dialogue.begin();
    dialogue.line("rear");
    dialogue.line("spare");
    plug("SS01", "Stick");
    plug("HS01", "Mouse");
    EXPECT_TRUE(dialogue.end(mapFile.string()));
    EXPECT_EQ(out.str(), "XHC1: 4 ports, 0 of 15 kept\n"
                         "Plug a device into a socket you want to keep: a USB 3 device first, then a USB 2 "
                         "device into the same socket.\n"
                         "Give each socket's name when asked (an empty line: none; an earlier socket's name: "
                         "the same socket). End of input (Ctrl-D) ends the session.\n"
                         "Seen: SS01 (with HS01) on XHC1: Stick\n"
                         "Name: Named \"rear\".\n"
                         "1 socket found; ports kept: XHC1 2 of 15; not seen yet: 2 ports\n"
                         "Seen: HS01 (with SS01) on XHC1: Mouse: the other half of \"rear\".\n"
                         "1 socket found; ports kept: XHC1 2 of 15; not seen yet: 2 ports\n"
                         "Map saved to " +
                             mapFile.string() +
                             ".\n"
                             "1 socket:\n"
                             "  \"rear\": XHC1 HS01, XHC1 SS01; USB3 (3)\n"
                             "Never seen (uncheck them to leave them out): XHC1 HS02, XHC1 SS02\n");
    const auto saved = readMapFile(mapFile);
    ASSERT_TRUE(saved.map) << saved.reason;
    EXPECT_EQ(saved.map->session.port(usbPortStableID(xhc1(), xhc1().ports[0])).nickname, "rear");
}

} // namespace
} // namespace korvane
