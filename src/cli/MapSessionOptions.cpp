#include "cli/MapSessionOptions.h"

#include "cli/CommandLineSession.h"

#include <ostream>

namespace korvane {

std::pair<USBControllerMap, USBPortMap> portWithKey(const CollectorModel& model, const std::string& key,
                                                    const std::string& option) {
    for (const auto& controller : model.scannedControllers()) {
        for (const auto& port : controller.ports) {
            if (usbPortStableID(controller, port) == key) {
                return {controller, port};
            }
        }
    }
    throw UsageError{option + " " + key + ": no port has this key (see korvane scan --json)"};
}

std::vector<std::string> applyMapOptions(CollectorModel& model, const MapOptions& options) {
    // Nobody is there to confirm an overwrite: only the map being continued
    // may be written over.
    std::error_code error;
    if (options.saveMap && std::filesystem::exists(*options.saveMap, error) &&
        !(options.map && std::filesystem::equivalent(*options.map, *options.saveMap, error))) {
        throw UsageError{"--save-map " + options.saveMap->string() +
                         ": the file exists; continue it with --map " + options.saveMap->string() +
                         ", or save to another name"};
    }
    std::vector<std::string> notMatched;
    auto take = [&notMatched](const MapOutcome& outcome) {
        if (!outcome.succeeded) {
            std::string message = outcome.summary;
            for (const auto& line : outcome.details) {
                message += "\n  " + line;
            }
            throw UsageError{message};
        }
        notMatched.insert(notMatched.end(), outcome.details.begin(), outcome.details.end());
    };
    if (options.map) {
        take(model.openMap(*options.map));
    }
    if (options.importKext) {
        take(model.importPackage(*options.importKext));
    }
    for (const auto& assignment : options.nicknames) {
        const auto equals = assignment.find('=');
        if (equals == std::string::npos) {
            throw UsageError{"--nickname " + assignment + ": expected KEY=TEXT"};
        }
        const auto [controller, port] = portWithKey(model, assignment.substr(0, equals), "--nickname");
        model.setNickname(controller, port, assignment.substr(equals + 1));
    }
    return notMatched;
}

bool saveMapIfAsked(CollectorModel& model, const MapOptions& options, std::ostream& err) {
    if (!options.saveMap) {
        return true;
    }
    const MapOutcome outcome = model.saveMap(*options.saveMap);
    if (!outcome.succeeded) {
        err << "korvane: " << outcome.summary << '\n';
    }
    return outcome.succeeded;
}

} // namespace korvane
