#include "collector/PluggingSession.h"

#include "mapfile/MapFileCodec.h"
#include "support/ModelFixture.h"

#include <algorithm>
#include <fstream>
#include <gmock/gmock.h>

namespace korvane {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::HasSubstr;

class PluggingSessionTest : public ModelFixture {
  protected:
    // With `resumed`, the map file is opened first, as a resumed session is.
    void start(bool resumed = false) {
        transcript.clear();
        scanShowing({pairedXHC1(6, devices)});
        model->startUSBHotplugMonitoring();
        if (resumed) {
            ASSERT_TRUE(model->openMap(mapFile).succeeded);
        }
        plugging = std::make_unique<PluggingSession>(model, mapFile);
        plugging->onSighting = [this](const PlugSighting& sighting) { transcript.push_back(sighting.text); };
        plugging->onSaveFailure = [this](const std::string& reason) { transcript.push_back("! " + reason); };
    }

    // "+SS01 Stick" plugs a device in, "-SS01" takes it out (each a hotplug
    // event and the refresh after the debounce), "=rear" answers the prompt,
    // "@HS01 front" names a port as the window would.
    void run(const std::vector<std::string>& steps) {
        for (const auto& step : steps) {
            const std::string rest = step.substr(1);
            const auto space = rest.find(' ');
            if (step[0] == '=') {
                transcript.push_back(plugging->nameSocket(rest));
                continue;
            }
            if (step[0] == '@') {
                const auto& controller = model->scannedControllers().front();
                const auto port =
                    std::ranges::find(controller.ports, rest.substr(0, space), &USBPortMap::name);
                model->setNickname(controller, *port, rest.substr(space + 1));
                continue;
            }
            if (step[0] == '+') {
                devices[rest.substr(0, space)] = rest.substr(space + 1);
            } else {
                devices.erase(rest);
            }
            hotplugShowing({pairedXHC1(6, devices)});
        }
    }

    std::filesystem::path mapFile = home.path() / "plugging.korvanemap";
    // In XHC1's HS01..HS06 and SS01..SS04: Bluetooth on HS05 from the start.
    std::map<std::string, std::string> devices{{"HS05", "Bluetooth"}};
    std::unique_ptr<PluggingSession> plugging;
    std::vector<std::string> transcript;
};

TEST_F(PluggingSessionTest, EachArrivalNamesItsSocketAndTheNamesJoinAndTypeThem) {
    const std::string neverSeen = "Never seen (uncheck them to leave them out): ";
    // Each case's steps, then what the session says and its summary.
    using Lines = std::vector<std::string>;
    const std::tuple<const char*, Lines, Lines, Lines> cases[] = {
        {"two SuperSpeed ports named as one socket: Type-C without switch",
         {"+SS03 Stick", "=C left", "-SS03", "+SS04 Stick", "=C left"},
         {"Seen: SS03 (with HS03) on XHC1: Stick", "Named \"C left\".",
          "Seen: SS04 (with HS04) on XHC1: Stick",
          "Same socket as \"C left\": XHC1 HS03, XHC1 HS04, XHC1 SS03, XHC1 SS04, Type-C (10)."},
         {"1 socket:", "  \"C left\": XHC1 HS03, XHC1 HS04, XHC1 SS03, XHC1 SS04; Type-C (10)"}},
        {"the same SuperSpeed port both ways: Type-C with switch; Bluetooth replugged is no longer internal",
         {"+SS02 Stick", "=front", "-SS02", "+SS02 Stick", "=front", "-HS05", "+HS05 Bluetooth", "="},
         {"Seen: SS02 (with HS02) on XHC1: Stick", "Named \"front\".",
          "Seen: SS02 (with HS02) on XHC1: Stick, again: \"front\". The same socket turned over? Give its "
          "name again.",
          "Same socket as \"front\": XHC1 HS02, XHC1 SS02, Type-C+Sw (9).", "Seen: HS05 on XHC1: Bluetooth",
          "The socket of XHC1 HS05 has no name."},
         {"2 sockets:", "  \"front\": XHC1 HS02, XHC1 SS02; Type-C+Sw (9)",
          "  (no name): XHC1 HS05; USB3 (3)",
          neverSeen + "XHC1 HS01, XHC1 HS03, XHC1 HS04, XHC1 HS06, XHC1 SS01, XHC1 SS03, XHC1 SS04"}},
        {"a name one half had before plugging becomes the socket's when none is given",
         {"@HS01 front panel", "+SS01 Stick", "="},
         {"Seen: SS01 (with HS01) on XHC1: Stick", "The socket of XHC1 SS01 keeps the name \"front panel\"."},
         {"1 socket:", "  \"front panel\": XHC1 HS01, XHC1 SS01; USB3 (3)"}},
        {"a replug left unanswered changes nothing; a refused name is asked again",
         {"+SS01 Stick", "=rear\x1b[2J", "=rear", "-SS01", "+SS01 Stick", "="},
         {"Seen: SS01 (with HS01) on XHC1: Stick",
          "That name can't be used: it holds a control character (U+001B). Give another, or an empty line.",
          "Named \"rear\".",
          "Seen: SS01 (with HS01) on XHC1: Stick, again: \"rear\". The same socket turned over? Give its "
          "name again.",
          "The socket stays as it was."},
         {"1 socket:", "  \"rear\": XHC1 HS01, XHC1 SS01; USB3 (3)",
          neverSeen + "XHC1 HS02, XHC1 HS03, XHC1 HS04, XHC1 HS06, XHC1 SS02, XHC1 SS03, XHC1 SS04",
          "In use from the start and never replugged, so likely built in (type them Internal, 255): XHC1 "
          "HS05 (Bluetooth)"}},
    };
    for (const auto& [title, steps, said, summary] : cases) {
        SCOPED_TRACE(title);
        SetUp();
        start();
        run(steps);
        EXPECT_THAT(transcript, ElementsAreArray(said));
        EXPECT_FALSE(plugging->isAwaitingName());
        // Rows that end with a socket compare the sockets alone.
        auto lines = plugging->summaryLines();
        if (summary.back().starts_with("  ")) {
            lines.resize(std::min(lines.size(), summary.size()));
        }
        EXPECT_THAT(lines, ElementsAreArray(summary));
        // What the summary says is what the file holds.
        EXPECT_EQ(readMapFile(mapFile).map.value().session, model->session());
        devices = {{"HS05", "Bluetooth"}};
    }
}

TEST_F(PluggingSessionTest, ProgressAndBudgetAreToldAndTheInternalOfferIsTaken) {
    start();
    EXPECT_THAT(plugging->startLines(),
                ElementsAre("XHC1: 10 ports, 1 of 15 kept", std::string(PluggingSession::instruction) + "."));
    run({"+SS01 Stick", "=rear"});
    EXPECT_EQ(plugging->progressText(), "1 socket found; ports kept: XHC1 3 of 15; not seen yet: 7 ports");
    EXPECT_THAT(plugging->keepCandidatesAsInternal(), ElementsAre("XHC1 HS05 (Bluetooth)"));
    const auto xhc1 = pairedXHC1(6, {});
    EXPECT_EQ(readMapFile(mapFile).map.value().session.port(usbPortStableID(xhc1, xhc1.ports[4])).connector,
              connector::internal);
}

TEST_F(PluggingSessionTest, OverTheBudgetTheSummaryNamesThePortsNoSocketUses) {
    scanShowing({makeController("XHC2", 0x8086, 0xa36d, makePorts(18, 18))});
    plugging = std::make_unique<PluggingSession>(model, mapFile);
    EXPECT_EQ(
        plugging->summaryLines().back(),
        "XHC2 would be written with 18 ports, and macOS uses at most 15: uncheck 3 of HS01, HS02, HS03, "
        "HS04, HS05, HS06, HS07, HS08, HS09, HS10, HS11, HS12, HS13, HS14, HS15, HS16, HS17, HS18.");
}

TEST_F(PluggingSessionTest, AMapSavedMidwayResumesItsSockets) {
    start();
    run({"+SS01 Stick", "=rear"});
    SetUp();
    start(true);
    run({"+HS01 Mouse"});
    EXPECT_THAT(transcript,
                ElementsAre("Seen: HS01 (with SS01) on XHC1: Mouse: the other half of \"rear\"."));
}

TEST_F(PluggingSessionTest, AFailedSaveIsToldAndPluggingGoesOn) {
    std::ofstream(home.path() / "file") << "x";
    mapFile = home.path() / "file" / "plugging.korvanemap";
    start();
    run({"+SS01 Stick", "=rear"});
    const auto failure = HasSubstr("plugging.korvanemap");
    EXPECT_THAT(transcript,
                ElementsAre(failure, "Seen: SS01 (with HS01) on XHC1: Stick", failure, "Named \"rear\"."));
}

} // namespace
} // namespace korvane
