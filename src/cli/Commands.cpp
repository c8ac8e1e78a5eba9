#include "cli/Commands.h"

#include "app/CollectorAssembly.h"
#include "cli/CommandLineSession.h"
#include "cli/PortTable.h"
#include "collector/PortBudget.h"
#include "package/RegistryTreeRedaction.h"
#include "records/CollectorError.h"
#include "records/Connector.h"
#include "records/MacModel.h"
#include "savedregistry/SnapshotCodec.h"

#include <charconv>
#include <map>
#include <ostream>
#include <signal.h>
#include <thread>

namespace korvane {

namespace {

void printJSON(const nlohmann::json& value, std::ostream& out) {
    out << value.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace) << '\n' << std::flush;
}

// The registry keeps UsbConnector in one byte; the five named codes are the
// menu's, and the registry defines others in the same range.
std::int64_t parseCode(const std::string& text, const std::string& argument) {
    std::int64_t code = 0;
    const auto* end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, code);
    if (text.empty() || error != std::errc() || rest != end || !isConnectorCode(code)) {
        throw UsageError{"--connector " + argument +
                         ": the code must be a whole number from 0 to 255 (0 USB2, 3 USB3, 9 Type-C+Sw, "
                         "10 Type-C, 255 Internal)"};
    }
    return code;
}

} // namespace

int runScan(const ScanOptions& options, CommandStreams streams) {
    CommandLineSession session(options.source, streams.err);
    session.scanForEditing();
    if (options.session.map || options.session.importKext) {
        session.learnMachineModel(); // to tell a file made for another Mac
    }
    const auto notMatched = applyMapOptions(session.model(), options.session);
    const bool isSaved = saveMapIfAsked(session.model(), options.session, streams.err);
    const bool isMatching = options.session.map || options.session.importKext;
    if (options.json) {
        auto document = portJSON(session.model());
        if (isMatching) {
            document["notMatched"] = notMatched;
        }
        printJSON(document, streams.out);
    } else {
        streams.out << portTable(session.model());
        if (isMatching) {
            streams.out << notMatchedText(notMatched);
        }
    }
    return isSaved ? 0 : 1;
}

namespace {

void warn(std::ostream& err, const std::string& text) {
    err << "korvane: " << text << '\n';
}

// Refuses, before anything is written, a run that would leave sockets dead,
// in one line for every controller over the budget. The template ports a
// scan didn't see are said either way, as they surprise whoever reads the map.
void checkPortBudgets(const CollectorModel& model, bool allowOverLimit, std::ostream& err) {
    std::string over;
    const auto selected = model.selectedPortIDs();
    for (const auto& controller : model.scannedControllers()) {
        const PortBudget budget = portBudget(controller, selected);
        if (const std::string unseen = unseenTemplatePortsText(budget); !unseen.empty()) {
            warn(err, unseen + ".");
        }
        if (budget.isOverLimit()) {
            over += (over.empty() ? "" : "; ") + overLimitText(budget);
        }
    }
    if (over.empty()) {
        return;
    }
    if (!allowOverLimit) {
        throw UsageError{over + ": check at most 15 ports per controller (--select none and --port KEY), or "
                                "give --allow-over-limit to write them all the same"};
    }
    warn(err, over + ": written all the same (--allow-over-limit); macOS uses only 15 of them.");
}

} // namespace

int runGenerate(const GenerateOptions& options, CommandStreams streams) {
    CommandLineSession session(options.source, streams.err);
    auto& model = session.model();
    session.scanForEditing();
    // Asked now, so that where the model comes from is said before the run,
    // and a map or package made for another Mac is told.
    session.learnMachineModel();
    applyMapOptions(model, options.session);
    if (!options.model.empty()) {
        // Not echoed: a control character would garble the one line.
        if (const std::string problem = macModelProblem(options.model); !problem.empty()) {
            throw UsageError{"--model: " + problem};
        }
        model.setTargetModelChoice(options.model); // --model over the map's
    }
    // Wherever it came from: --model, the map, or an imported package.
    if (const TargetMacModel target = model.targetMacModel();
        target.source != TargetMacModel::Source::fallback) {
        if (const std::string note = macModelShapeNote(target.value); !note.empty()) {
            warn(streams.err, note);
        }
    } else {
        warn(streams.err,
             "the package names no Mac model (\"Mac\"), so macOS applies it on no Mac; name the Mac it is "
             "for with --model MODEL, e.g. --model iMac19,1.");
    }

    if (options.select == "all") {
        model.selectAllPorts();
    } else if (options.select == "none") {
        model.deselectAllPorts();
    }
    auto noCompanion = [&streams](const USBPortMap& port, const std::string& option) {
        warn(streams.err, option + " " + port.name +
                              ": the port has no companion; --with-companion changes nothing for it.");
    };
    for (const auto& key : options.ports) {
        const auto [controller, port] = portWithKey(model, key, "--port");
        model.setPortSelected(controller, port, true);
        if (!options.withCompanion) {
            continue;
        }
        if (const auto companion = model.companionOf(port)) {
            model.setPortSelected(*companion->controller, *companion->port, true);
        } else {
            noCompanion(port, "--port");
        }
    }
    for (const auto& assignment : options.connectors) {
        const auto equals = assignment.rfind('=');
        if (equals == std::string::npos) {
            throw UsageError{"--connector " + assignment + ": expected KEY=CODE"};
        }
        const std::int64_t code = parseCode(assignment.substr(equals + 1), assignment);
        const auto [controller, port] = portWithKey(model, assignment.substr(0, equals), "--connector");
        if (options.withCompanion) {
            if (!model.companionOf(port)) {
                noCompanion(port, "--connector");
            }
            model.setConnectorWithCompanion(controller, port, code);
        } else {
            model.setConnector(controller, port, code);
        }
    }
    if (model.showPortLimitWarning()) {
        streams.err
            << "Note: an Intel controller has 15 or more selected ports; macOS limits such a controller "
               "to 15 ports unless a port limit patch is in place.\n";
        model.dismissPortLimitWarning();
    }
    checkPortBudgets(model, options.allowOverLimit, streams.err);
    if (!saveMapIfAsked(model, options.session, streams.err)) {
        return 1;
    }
    streams.err << "The package will hold, per controller:\n" << contributionLines(model);

    model.startCollection();
    session.runUntil([&model] { return !model.isRunning(); });
    if (!model.lastZipURL()) {
        return 1;
    }
    streams.out << model.lastZipURL()->string() << '\n' << std::flush;
    for (const auto& note : model.mergePersonalityNotes()) {
        warn(streams.err, note);
    }
    return 0;
}

int runWatch(const ScanOptions& options, CommandStreams streams) {
    if (!options.source.isLive()) {
        // Nothing would ever come to wait for.
        const int status = runScan(options, streams);
        warn(streams.err, options.source.registryFile->string() +
                              " is a saved registry, which never changes: shown once.");
        return status;
    }
    // Ctrl-C ends the watch through the main loop, not in a signal handler.
    sigset_t stopSignals;
    sigemptyset(&stopSignals);
    sigaddset(&stopSignals, SIGINT);
    sigaddset(&stopSignals, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &stopSignals, nullptr);

    CommandLineSession session(options.source, streams.err, true);
    auto& model = session.model();
    std::thread([&session, stopSignals] {
        int signal = 0;
        sigwait(&stopSignals, &signal);
        session.scheduler().quit();
    }).detach();

    std::map<std::string, std::string> devices;
    auto show = [&] {
        std::set<std::string> changed;
        std::map<std::string, std::string> now;
        for (const auto& controller : model.scannedControllers()) {
            for (const auto& port : controller.ports) {
                const auto key = usbPortStableID(controller, port);
                now[key] = port.activeDevice;
                if (!devices.empty() && devices[key] != port.activeDevice) {
                    changed.insert(key);
                }
            }
        }
        devices = std::move(now);
        if (options.json) {
            printJSON(portJSON(model), streams.out);
        } else {
            streams.out << portTable(model, changed) << '\n' << std::flush;
        }
    };

    session.scanForEditing();
    applyMapOptions(model, options.session);
    // Saved after every refresh: a watch ends by a signal or a power cut,
    // and what it learnt until then must be in the file.
    bool isSaved = saveMapIfAsked(model, options.session, streams.err);
    show();
    if (!options.json) {
        streams.err << "Plug or unplug a USB device to see its port (* marks a change); Ctrl-C ends.\n";
    }
    bool wasScanning = false;
    model.observe([&] {
        // Noted first: saving the map is a change of its own that calls back.
        const bool hasRefreshed = wasScanning && !model.isScanningUSB();
        wasScanning = model.isScanningUSB();
        if (hasRefreshed) {
            isSaved = saveMapIfAsked(model, options.session, streams.err) && isSaved;
            show();
        }
    });
    model.startUSBHotplugMonitoring();
    session.runUntil([] { return false; });
    return isSaved ? 0 : 1;
}

int runSnapshot(const SnapshotOptions& options, CommandStreams streams) {
    // As --save-map: nobody is there to confirm an overwrite.
    std::error_code error;
    if (!options.force && std::filesystem::exists(options.output, error)) {
        throw UsageError{"--output " + options.output.string() +
                         ": the file exists; write over it with --force, or save to another name"};
    }
    CommandLineSession session(options.source, streams.err);
    const auto root = session.registry().copyRoot();
    if (!root) {
        warn(streams.err, std::string("no registry tree could be read") +
                              (options.source.registryFile ? "" : " on this machine"));
        return 1;
    }
    if (!options.raw) {
        redactSensitiveProperties(*root);
    }
    try {
        writeSnapshot(*root, options.output);
    } catch (...) {
        warn(streams.err, options.output.string() + ": " + errorDescription(std::current_exception()));
        return 1;
    }
    streams.out << options.output.string() << '\n';
    return 0;
}

int runUpdateIDs(CommandStreams streams) {
    CommandLineSession session({}, streams.err);
    auto& model = session.model();
    model.updateIDsDatabases();
    session.runUntil([&model] { return !model.isUpdatingIDs(); });
    const std::string result = model.lastIDsUpdateResult().value_or("");
    streams.out << result << '\n';
    return model.hasFailedIDsUpdate() ? 1 : 0;
}

int runPaths(CommandStreams streams) {
    const ApplicationPaths paths = applicationPaths();
    auto show = [&streams](const std::string& label, const std::filesystem::path& path) {
        std::error_code error;
        streams.out << label << std::string(label.size() < 21 ? 21 - label.size() : 0, ' ') << ' '
                    << path.string() << (std::filesystem::exists(path, error) ? "" : " (missing)") << '\n';
    };
    show("desktop:", paths.desktop);
    show("application support:", paths.applicationSupport);
    show("resources:", paths.resources);
    show("ditto:", paths.tools.ditto);
    show("plutil:", paths.tools.plutil);
    show("sysctl:", paths.tools.sysctl);
    if (!paths.tools.acpiexec.empty()) {
        show("acpiexec:", paths.tools.acpiexec);
    }
    return 0;
}

} // namespace korvane
