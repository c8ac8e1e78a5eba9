#include "cli/CommandLineSession.h"
#include "cli/Commands.h"
#include "cli/MapDialogue.h"
#include "collector/PluggingSession.h"
#include "platform/PlatformFolders.h"
#include "records/MacModel.h"

#include <algorithm>
#include <atomic>
#include <istream>
#include <ostream>
#include <thread>

namespace korvane {

namespace {

// "map-2026-11-22T130309Z.korvanemap" in the user's data folder: a new
// name each time, so that no earlier session is written over.
std::filesystem::path newMapInDataFolder(std::chrono::system_clock::time_point now) {
    std::string stamp = utcTimeText(now);
    stamp.erase(std::remove(stamp.begin(), stamp.end(), ':'), stamp.end());
    return applicationSupportDirectory() / "KorvaneGenerator" / "Maps" / ("map-" + stamp + ".korvanemap");
}

} // namespace

int runMap(const MapCommandOptions& options, CommandStreams streams, std::istream& in) {
    if (!options.source.isLive()) {
        // A saved registry never sees a device arrive.
        throw UsageError{"map needs the live machine"};
    }
    if (!options.model.empty()) {
        if (const std::string problem = macModelProblem(options.model); !problem.empty()) {
            throw UsageError{"--model: " + problem};
        }
    }
    const std::filesystem::path mapFile =
        options.saveMap ? *options.saveMap : newMapInDataFolder(std::chrono::system_clock::now());
    CommandLineSession session(options.source, streams.err, true);
    auto& model = session.model();
    session.scanForEditing();
    applyMapOptions(
        model,
        {.map = options.map, .importKext = {}, .nicknames = {}, .notes = {}, .saveMap = options.saveMap});
    if (!options.model.empty()) {
        model.setTargetModelChoice(options.model);
    }
    if (!options.saveMap) {
        std::error_code error;
        std::filesystem::create_directories(mapFile.parent_path(), error);
        if (error) {
            streams.err << "korvane: could not make the folder " << mapFile.parent_path().string() << ": "
                        << error.message() << '\n';
            return 1;
        }
        streams.err << "The map is saved to " << mapFile.string() << " after every socket.\n";
    }

    PluggingSession plugging(session.sharedModel(), mapFile);
    plugging.onSaveFailure = [&streams](const std::string& reason) {
        streams.err << "korvane: " << reason << '\n';
    };
    MapDialogue dialogue(plugging, streams.out);
    dialogue.begin();
    model.startUSBHotplugMonitoring();

    // Standard input is read apart from the main loop, which must go on
    // taking hotplug events while nobody types.
    bool isInputOver = false;
    auto& scheduler = session.scheduler();
    std::thread reader([&in, &scheduler, &dialogue, &isInputOver] {
        std::string text;
        while (std::getline(in, text)) {
            if (!text.empty() && text.back() == '\r') {
                text.pop_back();
            }
            scheduler.postToMain([&dialogue, text] { dialogue.line(text); });
        }
        scheduler.postToMain([&isInputOver] { isInputOver = true; });
    });
    session.runUntil([&isInputOver] { return isInputOver; });
    reader.join();
    return dialogue.end(mapFile.string()) ? 0 : 1;
}

} // namespace korvane
