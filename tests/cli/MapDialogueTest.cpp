#include "cli/MapDialogue.h"

#include "mapfile/MapFileCodec.h"
#include "support/ModelFixture.h"

#include <gmock/gmock.h>

namespace korvane {
namespace {

using MapDialogueTest = ModelFixture;

// A script that writes every name before the devices come, as a pipe does:
// each name waits for a socket that asks for one (the other half of a named
// socket asks none), and the transcript is the terminal's.
TEST_F(MapDialogueTest, NamesWrittenAheadWaitForTheirSocketsAndTheEndSavesAndSums) {
    scanShowing({pairedXHC1(4, {})});
    model->startUSBHotplugMonitoring();
    const auto mapFile = home.path() / "plugged.korvanemap";
    PluggingSession plugging(model, mapFile);
    std::ostringstream out;
    MapDialogue dialogue(plugging, out);
    dialogue.begin();
    dialogue.line("rear");
    dialogue.line("spare");
    hotplugShowing({pairedXHC1(4, {{"SS01", "Stick"}})});
    hotplugShowing({pairedXHC1(4, {{"HS01", "Mouse"}})});
    EXPECT_TRUE(dialogue.end(mapFile.string()));
    EXPECT_EQ(out.str(), "XHC1: 8 ports, 0 of 15 kept\n"
                         "Plug a device into a socket you want to keep: a USB 3 device first, then a USB 2 "
                         "device into the same socket.\n"
                         "Give each socket's name when asked (an empty line: none; an earlier socket's name: "
                         "the same socket). End of input (Ctrl-D) ends the session.\n"
                         "Seen: SS01 (with HS01) on XHC1: Stick\n"
                         "Name: Named \"rear\".\n"
                         "1 socket found; ports kept: XHC1 2 of 15; not seen yet: 6 ports\n"
                         "Seen: HS01 (with SS01) on XHC1: Mouse: the other half of \"rear\".\n"
                         "1 socket found; ports kept: XHC1 2 of 15; not seen yet: 6 ports\n"
                         "Map saved to " +
                             mapFile.string() +
                             ".\n"
                             "1 socket:\n"
                             "  \"rear\": XHC1 HS01, XHC1 SS01; USB3 (3)\n"
                             "Never seen (uncheck them to leave them out): XHC1 HS02, XHC1 HS03, XHC1 HS04, "
                             "XHC1 SS02, XHC1 SS03, XHC1 SS04\n");
    const auto xhc1 = pairedXHC1(4, {});
    EXPECT_EQ(readMapFile(mapFile).map.value().session.port(usbPortStableID(xhc1, xhc1.ports[0])).nickname,
              "rear");
}

} // namespace
} // namespace korvane
