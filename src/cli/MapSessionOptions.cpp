#include "cli/MapSessionOptions.h"

#include "base/Text.h"
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

namespace {

// KEY=TEXT assignments to a text field of ports, under the one rule every
// such text follows. A refusal doesn't repeat the text: it may hold what a
// terminal obeys.
void assignPortTexts(CollectorModel& model, const std::string& option,
                     const std::vector<std::string>& assignments, std::string SessionPort::*field) {
    for (const auto& assignment : assignments) {
        const auto equals = assignment.find('=');
        if (equals == std::string::npos) {
            throw UsageError{option + " " + assignment + ": expected KEY=TEXT"};
        }
        const std::string key = assignment.substr(0, equals);
        const auto [controller, port] = portWithKey(model, key, option);
        const std::string text = trimmed(assignment.substr(equals + 1));
        if (const auto problem = portTextProblem(text)) {
            throw UsageError{option + " " + key + ": " + *problem + "; the text must be printable, at most " +
                             std::to_string(maximumPortTextLength) + " characters"};
        }
        model.editPort(controller, port, [&](SessionPort& entry) { entry.*field = text; });
    }
}

} // namespace

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
    assignPortTexts(model, "--nickname", options.nicknames, &SessionPort::nickname);
    assignPortTexts(model, "--note", options.notes, &SessionPort::note);
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
