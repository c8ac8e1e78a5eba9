#include "cli/CommandLineSession.h"
#include "cli/Commands.h"

#include <CLI/CLI.hpp>
#include <array>
#include <cstdio>
#include <string_view>

namespace {

constexpr std::array<std::string_view, 6> commandNames = {"scan",     "generate",   "watch",
                                                          "snapshot", "update-ids", "paths"};

// What stands before the command is checked first, so the message names what
// was wrong rather than the missing command.
bool isWellFormedStart(int argc, char** argv) {
    if (argc < 2) {
        return true;
    }
    const std::string_view first = argv[1];
    if (first == "-h" || first == "--help" || first == "--help-all" || first == "--version") {
        return true;
    }
    if (first.starts_with('-')) {
        std::fprintf(stderr,
                     "korvane: unknown option '%s'; a command comes first (korvane --help lists them).\n",
                     argv[1]);
        return false;
    }
    for (std::string_view name : commandNames) {
        if (first == name) {
            return true;
        }
    }
    std::fprintf(
        stderr,
        "korvane: unknown command '%s'; the commands are scan, generate, watch, snapshot, update-ids "
        "and paths.\n",
        argv[1]);
    return false;
}

} // namespace

int main(int argc, char** argv) {
    using namespace korvane;
    if (!isWellFormedStart(argc, argv)) {
        return 2;
    }

    CLI::App app{
        "korvane: maps a machine's USB ports and writes Korvane.kext, its report and log as Korvane.zip "
        "on the Desktop."};
    app.set_version_flag("--version", std::string(KORVANE_VERSION));
    app.require_subcommand(1);

    const std::string registryHelp =
        "Read this saved registry instead of the live one: an ioreg -a snapshot (XML or binary property "
        "list) or "
        "an ioreg -l text dump, scanned with the same logic as the live registry";

    const std::string ioregHelp = "Read the text of an ioreg dump line by line instead, as the fallback dump "
                                  "scanner does when a machine's "
                                  "live scan finds no controller. It sees far less than --registry (on real "
                                  "Macs it finds controllers on "
                                  "PCI nodes but no ports), so --registry is what you want for a dump";
    auto addSources = [&](CLI::App* command, RegistryChoice& choice) {
        // The files are checked where they are opened, in the words both
        // programs use.
        auto* registry = command->add_option("--registry", choice.registryFile, registryHelp);
        command->add_option("--ioreg", choice.ioregFile, ioregHelp)->excludes(registry);
    };

    auto addMapOptions = [](CLI::App* command, MapOptions& session) {
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
        command->add_option(
            "--note", session.notes,
            "Note something about a socket: KEY=TEXT (\"behind the card reader\"; an empty TEXT "
            "removes the note)");
        command->add_option("--save-map", session.saveMap,
                            "Save the session (checked ports, connectors, nicknames, devices seen) to this "
                            "map file");
        return std::make_pair(map, kext);
    };

    ScanOptions scan;
    auto* scanCommand =
        app.add_subcommand("scan", "Scan the USB controllers and ports as Reset Ports does, and print "
                                   "them; the active ports are the ones checked");
    addSources(scanCommand, scan.source);
    scanCommand->add_flag("--json", scan.json, "Print one JSON object instead of a table");
    addMapOptions(scanCommand, scan.session);

    GenerateOptions generate;
    auto* generateCommand = app.add_subcommand(
        "generate", "Scan, select ports and write Korvane.zip on the Desktop, as the Generate button does");
    addSources(generateCommand, generate.source);
    const auto [generateMap, generateKext] = addMapOptions(generateCommand, generate.session);
    generateCommand
        ->add_option("--select", generate.select, "Ports to start from: active (default), all or none")
        ->check(CLI::IsMember({"active", "all", "none"}))
        ->excludes(generateMap)
        ->excludes(generateKext);
    generateCommand->add_option("--port", generate.ports,
                                "Also check the port with this key (portKey in scan --json)");
    generateCommand->add_option("--connector", generate.connectors,
                                "Set a port's connector: KEY=CODE, CODE from 0 to 255 as the registry's "
                                "UsbConnector byte: 0 (USB2), 3 (USB3), 9 (Type-C+Sw), 10 (Type-C), "
                                "255 (Internal) and the other values it defines");
    generateCommand->add_flag("--with-companion", generate.withCompanion,
                              "Give each --port's check and each --connector's type to the port's companion "
                              "too: the other half (USB 2 or SuperSpeed) of the same connector");
    generateCommand->add_option("--model", generate.model,
                                "The Mac model the map is for, as its SMBIOS names it (iMac19,1, "
                                "MacBookPro15,2): macOS applies the map only on that model. Default: this "
                                "machine's model, else \"Mac\"");

    ScanOptions watch;
    auto* watchCommand = app.add_subcommand("watch", "Print the ports, then again after every plug or "
                                                     "unplug, marking the ports that changed; Ctrl-C ends. "
                                                     "A saved registry never changes: it is shown once");
    watchCommand->add_option("--registry", watch.source.registryFile, registryHelp);
    watchCommand->add_flag("--json", watch.json, "Print one JSON object per refresh, one per line");
    addMapOptions(watchCommand, watch.session);

    SnapshotOptions snapshot;
    auto* snapshotCommand = app.add_subcommand(
        "snapshot", "Save the registry tree as a snapshot file that scan --registry reads. People share "
                    "these files, so serial numbers, UUIDs, MAC addresses, the console user and the "
                    "computer's names are masked as in the package, unless --raw is given");
    snapshotCommand->add_option("--registry", snapshot.source.registryFile, registryHelp);
    snapshotCommand->add_option("-o,--output", snapshot.output,
                                "Where to write it (default korvane-registry.plist)");
    snapshotCommand->add_flag("--raw", snapshot.raw, "Leave the identifiers unmasked");

    auto* updateCommand = app.add_subcommand(
        "update-ids", "Download fresh pci.ids and usb.ids into the user's application support folder");
    auto* pathsCommand = app.add_subcommand("paths", "Show where the program finds its tools and folders");

    try {
        app.parse(argc, argv);
    } catch (const CLI::CallForHelp& help) {
        return app.exit(help);
    } catch (const CLI::CallForAllHelp& help) {
        return app.exit(help);
    } catch (const CLI::CallForVersion& version) {
        return app.exit(version);
    } catch (const CLI::ParseError& error) {
        std::fprintf(stderr, "korvane: %s\nRun korvane --help for the commands.\n", error.what());
        return 2;
    }

    try {
        if (*scanCommand) {
            return runScan(scan);
        }
        if (*generateCommand) {
            return runGenerate(generate);
        }
        if (*watchCommand) {
            return runWatch(watch);
        }
        if (*snapshotCommand) {
            return runSnapshot(snapshot);
        }
        if (*updateCommand) {
            return runUpdateIDs();
        }
        if (*pathsCommand) {
            return runPaths();
        }
    } catch (const UsageError& error) {
        std::fprintf(stderr, "korvane: %s\n", error.message.c_str());
        return 2;
    }
    return 2;
}
