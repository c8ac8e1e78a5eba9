#include "cli/CommandLine.h"

#include "cli/CommandLineSession.h"
#include "cli/Commands.h"

#include <CLI/CLI.hpp>
#include <array>
#include <functional>
#include <iostream>
#include <ostream>
#include <string_view>

namespace korvane {

namespace {

constexpr std::array<std::string_view, 7> commandNames = {"scan",     "generate",   "watch", "map",
                                                          "snapshot", "update-ids", "paths"};

// What stands before the command is checked first, so the message names what
// was wrong rather than the missing command.
bool isWellFormedStart(const std::vector<std::string>& arguments, std::ostream& err) {
    if (arguments.size() < 2) {
        return true;
    }
    const std::string_view first = arguments[1];
    if (first == "-h" || first == "--help" || first == "--help-all" || first == "--version") {
        return true;
    }
    if (first.starts_with('-')) {
        err << "korvane: unknown option '" << first
            << "'; a command comes first (korvane --help lists them).\n";
        return false;
    }
    for (std::string_view name : commandNames) {
        if (first == name) {
            return true;
        }
    }
    err << "korvane: unknown command '" << first
        << "'; the commands are scan, generate, watch, map, snapshot, update-ids and paths.\n";
    return false;
}

const std::string registryHelp =
    "Read this saved registry instead of the live one: an ioreg -a snapshot (XML or binary property list) or "
    "an ioreg -l text dump, scanned with the same logic as the live registry";

const std::string ioregHelp =
    "Read the text of an ioreg dump line by line instead, as the fallback dump scanner does when a machine's "
    "live scan finds no controller. It sees far less than --registry (on real Macs it finds controllers on "
    "PCI nodes but no ports), so --registry is what you want for a dump";

void addSources(CLI::App* command, RegistryChoice& choice) {
    // The files are checked where they are opened, in the words both
    // programs use.
    auto* registry = command->add_option("--registry", choice.registryFile, registryHelp);
    command->add_option("--ioreg", choice.ioregFile, ioregHelp)->excludes(registry);
}

// Returns the --map and --import-kext options, which some choices exclude.
std::pair<CLI::Option*, CLI::Option*> addMapOptions(CLI::App* command, MapOptions& session) {
    auto* map = command
                    ->add_option("--map", session.map,
                                 "Start from this saved map: its checked ports, connectors, nicknames, "
                                 "target model and the devices seen in each port")
                    ->check(CLI::ExistingPath);
    auto* kext = command
                     ->add_option("--import-kext", session.importKext,
                                  "Start from an existing port-map package: a .kext folder, its "
                                  "Info.plist, or a Korvane.zip; its ports are checked and take its "
                                  "connectors, its model becomes the target model")
                     ->check(CLI::ExistingPath);
    command->add_option("--nickname", session.nicknames,
                        "Name a socket: KEY=TEXT (KEY is portKey in scan --json; an empty TEXT removes "
                        "the name)");
    command->add_option("--note", session.notes,
                        "Note something about a socket: KEY=TEXT (\"behind the card reader\"; an empty TEXT "
                        "removes the note)");
    command->add_option("--save-map", session.saveMap,
                        "Save the session (checked ports, connectors, nicknames, devices seen) to this "
                        "map file");
    return {map, kext};
}

CLI::App* declareScan(CLI::App& app, ScanOptions& scan) {
    auto* command = app.add_subcommand("scan", "Scan the USB controllers and ports as Reset Ports does, and "
                                               "print them; the active ports are the ones checked");
    addSources(command, scan.source);
    command->add_flag("--json", scan.json, "Print one JSON object instead of a table");
    addMapOptions(command, scan.session);
    return command;
}

CLI::App* declareGenerate(CLI::App& app, GenerateOptions& generate) {
    auto* command = app.add_subcommand(
        "generate", "Scan, select ports and write Korvane.zip on the Desktop, as the Generate button does");
    addSources(command, generate.source);
    const auto [map, kext] = addMapOptions(command, generate.session);
    command->add_option("--select", generate.select, "Ports to start from: active (default), all or none")
        ->check(CLI::IsMember({"active", "all", "none"}))
        ->excludes(map)
        ->excludes(kext);
    command->add_option("--port", generate.ports,
                        "Also check the port with this key (portKey in scan --json)");
    command->add_option("--connector", generate.connectors,
                        "Set a port's connector: KEY=CODE, CODE from 0 to 255 as the registry's "
                        "UsbConnector byte: 0 (USB2), 3 (USB3), 9 (Type-C+Sw), 10 (Type-C), "
                        "255 (Internal) and the other values it defines");
    command->add_flag("--with-companion", generate.withCompanion,
                      "Give each --port's check and each --connector's type to the port's companion "
                      "too: the other half (USB 2 or SuperSpeed) of the same connector");
    command->add_option("--model", generate.model,
                        "The Mac model the map is for, as its SMBIOS names it (iMac19,1, "
                        "MacBookPro15,2): macOS applies the map only on that model. Default: the saved "
                        "registry's own model, else this machine's, else \"Mac\"");
    command->add_flag("--allow-over-limit", generate.allowOverLimit,
                      "Write a controller with more than 15 ports all the same; macOS uses only 15 of "
                      "them");
    return command;
}

CLI::App* declareWatch(CLI::App& app, ScanOptions& watch) {
    auto* command = app.add_subcommand("watch", "Print the ports, then again after every plug or "
                                                "unplug, marking the ports that changed; Ctrl-C ends. "
                                                "A saved registry never changes: it is shown once");
    command->add_option("--registry", watch.source.registryFile, registryHelp);
    command->add_flag("--json", watch.json, "Print one JSON object per refresh, one per line");
    addMapOptions(command, watch.session);
    return command;
}

CLI::App* declareMap(CLI::App& app, MapCommandOptions& map) {
    auto* command = app.add_subcommand(
        "map", "Map by plugging: plug a device into each socket you want to keep and name it when asked "
               "(names are read from standard input, a line each); end of input saves the map and prints "
               "the summary. Live machine only");
    // Accepted so that the refusal names the reason rather than the option.
    addSources(command, map.source);
    command->add_option("--map", map.map, "Resume this saved map")->check(CLI::ExistingPath);
    command->add_option("--save-map", map.saveMap,
                        "Save the map here after every socket (default: a new file in the user's data "
                        "folder)");
    command->add_option("--model", map.model, "The Mac model the map is for, as its SMBIOS names it");
    return command;
}

CLI::App* declareSnapshot(CLI::App& app, SnapshotOptions& snapshot) {
    auto* command = app.add_subcommand(
        "snapshot", "Save the registry tree as a snapshot file that scan --registry reads. People share "
                    "these files, so serial numbers, UUIDs, MAC addresses, the console user and the "
                    "computer's names are masked as in the package, unless --raw is given");
    command->add_option("--registry", snapshot.source.registryFile, registryHelp);
    command->add_option("-o,--output", snapshot.output, "Where to write it (default korvane-registry.plist)");
    command->add_flag("--raw", snapshot.raw, "Leave the identifiers unmasked");
    command->add_flag("--force", snapshot.force, "Write over the output file when it exists");
    return command;
}

// A declared command and what runs it once its options are parsed.
struct Command {
    CLI::App* declared;
    std::function<int(CommandStreams)> run;
};

} // namespace

int runCommandLine(const std::vector<std::string>& arguments, std::ostream& out, std::ostream& err) {
    return runCommandLine(arguments, std::cin, out, err);
}

int runCommandLine(const std::vector<std::string>& arguments, std::istream& in, std::ostream& out,
                   std::ostream& err) {
    if (!isWellFormedStart(arguments, err)) {
        return 2;
    }

    CLI::App app{
        "korvane: maps a machine's USB ports and writes Korvane.kext, its report and log as Korvane.zip "
        "on the Desktop."};
    if (!arguments.empty()) {
        app.name(arguments.front()); // as the user called it, for the usage line
    }
    app.set_version_flag("--version", std::string(KORVANE_VERSION));
    app.require_subcommand(1);

    ScanOptions scan;
    GenerateOptions generate;
    ScanOptions watch;
    SnapshotOptions snapshot;
    MapCommandOptions map;
    const std::array commands = {
        Command{declareScan(app, scan), [&scan](CommandStreams streams) { return runScan(scan, streams); }},
        Command{declareGenerate(app, generate),
                [&generate](CommandStreams streams) { return runGenerate(generate, streams); }},
        Command{declareWatch(app, watch),
                [&watch](CommandStreams streams) { return runWatch(watch, streams); }},
        Command{declareMap(app, map),
                [&map, &in](CommandStreams streams) { return runMap(map, streams, in); }},
        Command{declareSnapshot(app, snapshot),
                [&snapshot](CommandStreams streams) { return runSnapshot(snapshot, streams); }},
        Command{app.add_subcommand("update-ids",
                                   "Download fresh pci.ids and usb.ids into the user's application support "
                                   "folder"),
                [](CommandStreams streams) { return runUpdateIDs(streams); }},
        Command{app.add_subcommand("paths", "Show where the program finds its tools and folders"),
                [](CommandStreams streams) { return runPaths(streams); }},
    };

    try {
        // CLI11 takes the arguments last first, without the program's name.
        std::vector<std::string> reversed(arguments.rbegin(), arguments.rend());
        if (!reversed.empty()) {
            reversed.pop_back();
        }
        app.parse(reversed);
    } catch (const CLI::CallForHelp& help) {
        return app.exit(help, out, err);
    } catch (const CLI::CallForAllHelp& help) {
        return app.exit(help, out, err);
    } catch (const CLI::CallForVersion& version) {
        return app.exit(version, out, err);
    } catch (const CLI::ParseError& error) {
        err << "korvane: " << error.what() << "\nRun korvane --help for the commands.\n";
        return 2;
    }

    CommandStreams streams{out, err};
    try {
        for (const auto& command : commands) {
            if (*command.declared) {
                return command.run(streams);
            }
        }
    } catch (const UsageError& error) {
        err << "korvane: " << error.message << "\n";
        return 2;
    }
    return 2;
}

} // namespace korvane
