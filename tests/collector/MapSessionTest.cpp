#include "base/FileIO.h"
#include "mapfile/MapFileCodec.h"
#include "support/ModelFixture.h"
#include "support/TestData.h"

#include <gmock/gmock.h>

namespace korvane {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class MapSessionTest : public ModelFixture {
  protected:
    // XHC1 with a stick on HS01 and two empty ports.
    const USBControllerMap xhc1 =
        makeController("XHC1", 0x8086, 0xa36d,
                       {makePort("HS01", 1, "SanDisk Ultra", 0), makePort("HS02", 2), makePort("SS01", 17)});
    std::string key(std::size_t port, const USBControllerMap& controller) const {
        return usbPortStableID(controller, controller.ports[port]);
    }
    std::string key(std::size_t port) const { return key(port, xhc1); }
    fs::path file(const std::string& name) const { return home.path() / name; }

    // The user's work on xhc1: HS02 checked and made Type-C, HS01 named.
    void work() {
        scanShowing({xhc1});
        model->setPortSelected(xhc1, xhc1.ports[1], true);
        model->setConnector(xhc1, xhc1.ports[1], 10);
        model->setNickname(xhc1, xhc1.ports[0], "  rear, blue, top\n");
        model->setTargetModelChoice("iMac19,1");
    }
};

TEST_F(MapSessionTest, ASavedSessionOpensAgainAsItWasAndOnlyEditsMarkItUnsaved) {
    scanShowing({xhc1});
    model->setTargetModelChoice("Macmini8,1");
    EXPECT_FALSE(model->hasUnsavedChanges()) << "a reset's result, and a model the settings keep anyway";
    work();
    EXPECT_TRUE(model->hasUnsavedChanges());
    EXPECT_FALSE(model->setNickname(xhc1, xhc1.ports[0], "rear\x1b[2J")) << "refused as a whole";
    EXPECT_EQ(model->nicknameFor(xhc1, xhc1.ports[0]), "rear, blue, top");
    const USBMapFile saved = model->currentMap();
    EXPECT_EQ(model->saveMap(file("session.korvanemap")).summary, "Saved session.korvanemap.");
    EXPECT_FALSE(model->hasUnsavedChanges());

    // The next day: a reset, other edits, then the map again.
    scanShowing({xhc1});
    model->setNickname(xhc1, xhc1.ports[0], "");
    model->setPortSelected(xhc1, xhc1.ports[2], true);
    model->setTargetModelChoice("");
    EXPECT_TRUE(model->hasUnsavedChanges()) << "the reset undid work the file holds";
    EXPECT_EQ(model->openMap(file("session.korvanemap")).summary,
              "Opened session.korvanemap: 2 of 2 ports matched.");
    EXPECT_EQ(model->currentMap(), saved);
    EXPECT_FALSE(model->hasUnsavedChanges());
    EXPECT_THAT(logLines().back(),
                HasSubstr("Map opened: " + file("session.korvanemap").string() + " (2 of 2 ports matched)"));
}

TEST_F(MapSessionTest, AMapFromAnotherMachineRestoresWhatMatchesAndKeepsTheRest) {
    const auto other = makeController("XHC", 0x1022, 0x15e0, {makePort("HS01", 1), makePort("HS02", 2)});
    USBMapFile map;
    map.session.selectOnly({key(1), key(0, other), key(1, other)});
    map.session.edit(key(1, other), [](SessionPort& port) { port.connector = 255; });
    map.session.edit(key(0, other), [](SessionPort& port) { port.nickname = "front"; });
    writeMapFile(file("other.korvanemap"), map);

    scanShowing({xhc1});
    const MapOutcome outcome = model->openMap(file("other.korvanemap"));
    EXPECT_EQ(outcome.summary, "Opened other.korvanemap: 1 of 3 ports matched; 2 keys not on this machine.");
    EXPECT_THAT(outcome.details, ElementsAre(key(0, other) + " \"front\"", key(1, other)));
    EXPECT_TRUE(model->isPortSelected(xhc1, xhc1.ports[1]));
    EXPECT_FALSE(model->isPortSelected(xhc1, xhc1.ports[0])) << "the map's selection, not the active ports";
    EXPECT_EQ(model->portSightings().size(), 1u) << "what this session saw stays";

    ASSERT_TRUE(model->saveMap(file("again.korvanemap")).succeeded);
    EXPECT_EQ(readMapFile(file("again.korvanemap")).map.value().session.port(key(1, other)),
              map.session.port(key(1, other)))
        << "kept in the file, not thrown away";
}

TEST_F(MapSessionTest, EveryRefusalLeavesTheSessionAndTheLogAsTheyWere) {
    work();
    ASSERT_TRUE(model->saveMap(file("good.korvanemap")).succeeded);
    model->setPortSelected(xhc1, xhc1.ports[2], true);
    writeFileAtomically(file("text.korvanemap"), "rear, blue, top");
    fs::create_directories(file("folder.korvanemap"));
    const USBMapFile before = model->currentMap();
    const std::string log = model->logText();

    // Which reason a file earns is the map codec's and the package reader's
    // to say; here, that no way of failing touches the session.
    const std::pair<std::function<MapOutcome()>, std::string> attempts[] = {
        {[&] { return model->openMap(file("text.korvanemap")); }, "is not a KorvaneGenerator port map"},
        {[&] { return model->openMap(file("folder.korvanemap")); }, "is not a file"},
        {[&] { return model->openMap(file("missing.korvanemap")); }, "could not be read"},
        {[&] { return model->importPackage(testDataPath("mapfile/packages/hostile-shared-chain.bplist")); },
         "is not a readable property list"},
        {[&] { return model->saveMap(file("good.korvanemap") / "below"); },
         "Could not save the map to " + (file("good.korvanemap") / "below").string() + ": Not a directory."},
    };
    for (const auto& [attempt, reason] : attempts) {
        const MapOutcome outcome = attempt();
        EXPECT_FALSE(outcome.succeeded) << reason;
        EXPECT_THAT(outcome.summary, HasSubstr(reason));
        EXPECT_EQ(model->currentMap(), before) << reason;
        EXPECT_EQ(model->logText(), log) << reason;
        EXPECT_EQ(model->mapFileURL(), file("good.korvanemap")) << reason;
        EXPECT_TRUE(model->hasUnsavedChanges()) << reason;
    }

    model->scanUSBPorts(); // a Reset Ports that ends later would undo what is opened now
    for (const MapOutcome& busy :
         {model->openMap(file("good.korvanemap")),
          model->importPackage(testDataPath("mapfile/packages/handmade-other-tool-Info.plist"))}) {
        EXPECT_THAT(busy.summary, HasSubstr("while a scan is under way. Nothing was changed."));
    }
    scheduler.runUntilIdle();

    // A package none of whose ports is here would only uncheck everything.
    scanShowing({makeController("XHC9", 0x1b73, 0x1100, makePorts(2))});
    const USBMapFile scanned = model->currentMap();
    const MapOutcome none =
        model->importPackage(testDataPath("mapfile/packages/handmade-other-tool-Info.plist"));
    EXPECT_THAT(none.summary, HasSubstr("None of the 6 ports of "));
    EXPECT_EQ(none.details.size(), 6u);
    EXPECT_EQ(model->currentMap(), scanned);
}

TEST_F(MapSessionTest, ImportingOurOwnZipChecksWhatItWasMadeFromWithItsConnectors) {
    work();
    model->startCollection();
    scheduler.runUntilIdle();
    ASSERT_TRUE(model->lastZipURL());
    scanShowing({xhc1});
    model->setTargetModelChoice("");
    EXPECT_THAT(model->selectedPortIDs(), ElementsAre(key(0)));

    EXPECT_EQ(model->importPackage(*model->lastZipURL()).summary,
              "Imported Korvane.zip: 2 of 2 ports matched.");
    EXPECT_THAT(model->selectedPortIDs(), ElementsAre(key(0), key(1)));
    EXPECT_EQ(model->connectorFor(xhc1, xhc1.ports[1]), 10);
    EXPECT_EQ(model->targetModelChoice(), "iMac19,1") << "the package's model";
    EXPECT_THAT(logLines().back(), HasSubstr("(2 of 2 ports matched)"));
}

} // namespace
} // namespace korvane
