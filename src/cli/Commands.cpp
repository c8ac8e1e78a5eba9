#include "cli/Commands.h"

#include "app/CollectorAssembly.h"
#include "cli/CommandLineSession.h"
#include "cli/PortTable.h"
#include "records/CollectorError.h"
#include "savedregistry/SnapshotCodec.h"

#include <charconv>
#include <cstdio>
#include <map>
#include <signal.h>
#include <thread>

namespace korvane {

namespace {

void printJSON(const nlohmann::json& value) {
    std::puts(value.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace).c_str());
    std::fflush(stdout);
}

// Port keys of the current scan, with their controller and port.
std::map<std::string, std::pair<USBControllerMap, USBPortMap>> portsByKey(const CollectorModel& model) {
    std::map<std::string, std::pair<USBControllerMap, USBPortMap>> ports;
    for (const auto& controller : model.scannedControllers()) {
        for (const auto& port : controller.ports) {
            ports.emplace(usbPortStableID(controller, port), std::make_pair(controller, port));
        }
    }
    return ports;
}

std::int64_t parseCode(const std::string& text, const std::string& argument) {
    std::int64_t code = 0;
    const auto* end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, code);
    if (text.empty() || error != std::errc() || rest != end) {
        throw UsageError{"--connector " + argument +
                         ": the code must be a whole number (0, 3, 9, 10, 255, ...)"};
    }
    return code;
}

} // namespace

int runScan(const ScanOptions& options) {
    CommandLineSession session(options.source, options.json ? nullptr : stderr);
    session.scanForEditing();
    if (options.json) {
        printJSON(portJSON(session.model()));
    } else {
        std::fputs(portTable(session.model()).c_str(), stdout);
    }
    return 0;
}

int runGenerate(const GenerateOptions& options) {
    CommandLineSession session(options.source, stdout);
    auto& model = session.model();
    session.scanForEditing();

    if (options.select == "all") {
        model.selectAllPorts();
    } else if (options.select == "none") {
        model.deselectAllPorts();
    }
    const auto ports = portsByKey(model);
    auto find = [&ports](const std::string& key, const std::string& option) {
        const auto it = ports.find(key);
        if (it == ports.end()) {
            throw UsageError{option + " " + key + ": no port has this key (see korvane scan --json)"};
        }
        return it->second;
    };
    for (const auto& key : options.ports) {
        const auto& [controller, port] = find(key, "--port");
        model.setPortSelected(controller, port, true);
    }
    for (const auto& assignment : options.connectors) {
        const auto equals = assignment.rfind('=');
        if (equals == std::string::npos) {
            throw UsageError{"--connector " + assignment + ": expected KEY=CODE"};
        }
        const auto& [controller, port] = find(assignment.substr(0, equals), "--connector");
        model.setConnector(controller, port, parseCode(assignment.substr(equals + 1), assignment));
    }
    if (model.showPortLimitWarning()) {
        std::fputs(
            "Note: an Intel controller has 15 or more selected ports; macOS limits such a controller to 15 "
            "ports unless a port limit patch is in place.\n",
            stdout);
        model.dismissPortLimitWarning();
    }

    model.startCollection();
    session.runUntil([&model] { return !model.isRunning(); });
    if (!model.lastZipURL()) {
        return 1;
    }
    std::printf("%s\n", model.lastZipURL()->c_str());
    return 0;
}

int runWatch(const ScanOptions& options) {
    // Ctrl-C ends the watch through the main loop, not in a signal handler.
    sigset_t stopSignals;
    sigemptyset(&stopSignals);
    sigaddset(&stopSignals, SIGINT);
    sigaddset(&stopSignals, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &stopSignals, nullptr);

    CommandLineSession session(options.source, nullptr, true);
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
            printJSON(portJSON(model));
        } else {
            std::fputs(portTable(model, changed).c_str(), stdout);
            std::fputs("Plug or unplug a USB device to see its port (* marks a change); Ctrl-C ends.\n\n",
                       stdout);
            std::fflush(stdout);
        }
    };

    session.scanForEditing();
    show();
    bool wasScanning = false;
    model.observe([&] {
        if (wasScanning && !model.isScanningUSB()) {
            show();
        }
        wasScanning = model.isScanningUSB();
    });
    model.startUSBHotplugMonitoring();
    session.runUntil([] { return false; });
    return 0;
}

int runSnapshot(const RegistryChoice& source, const std::filesystem::path& output) {
    CommandLineSession session(source, nullptr);
    const auto root = session.registry().copyRoot();
    if (!root) {
        std::fprintf(stderr, "korvane: no registry tree could be read%s\n",
                     source.registryFile ? "" : " on this machine");
        return 1;
    }
    try {
        writeSnapshot(*root, output);
    } catch (...) {
        std::fprintf(stderr, "korvane: %s: %s\n", output.c_str(),
                     errorDescription(std::current_exception()).c_str());
        return 1;
    }
    std::printf("%s\n", output.c_str());
    return 0;
}

int runUpdateIDs() {
    CommandLineSession session({}, stdout);
    auto& model = session.model();
    model.updateIDsDatabases();
    session.runUntil([&model] { return !model.isUpdatingIDs(); });
    return model.logText().find(" update failed: ") == std::string::npos ? 0 : 1;
}

int runPaths() {
    const ApplicationPaths paths = applicationPaths();
    auto show = [](const char* label, const std::filesystem::path& path) {
        std::error_code error;
        std::printf("%-21s %s%s\n", label, path.c_str(),
                    std::filesystem::exists(path, error) ? "" : " (missing)");
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
