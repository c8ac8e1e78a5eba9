#include "cli/CommandLineSession.h"
#include "cli/Commands.h"

#include <CLI/CLI.hpp>
#include <cstdio>

int main(int argc, char** argv) {
    using namespace korvane;

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
        auto* registry =
            command->add_option("--registry", choice.registryFile, registryHelp)->check(CLI::ExistingFile);
        command->add_option("--ioreg", choice.ioregFile, ioregHelp)
            ->check(CLI::ExistingFile)
            ->excludes(registry);
    };

    ScanOptions scan;
    auto* scanCommand =
        app.add_subcommand("scan", "Scan the USB controllers and ports as Reset Ports does, and print "
                                   "them; the active ports are the ones checked");
    addSources(scanCommand, scan.source);
    scanCommand->add_flag("--json", scan.json, "Print one JSON object instead of a table");

    GenerateOptions generate;
    auto* generateCommand = app.add_subcommand(
        "generate", "Scan, select ports and write Korvane.zip on the Desktop, as the Generate button does");
    addSources(generateCommand, generate.source);
    generateCommand
        ->add_option("--select", generate.select, "Ports to start from: active (default), all or none")
        ->check(CLI::IsMember({"active", "all", "none"}));
    generateCommand->add_option("--port", generate.ports,
                                "Also check the port with this key (portKey in scan --json)");
    generateCommand->add_option(
        "--connector", generate.connectors,
        "Set a port's connector: KEY=CODE, CODE one of 0 (USB2), 3 (USB3), 9 (Type-C+Sw), "
        "10 (Type-C), 255 (Internal)");
    generateCommand->add_flag("--with-companion", generate.withCompanion,
                              "Give each --port's check and each --connector's type to the port's companion "
                              "too: the other half (USB 2 or SuperSpeed) of the same connector");
    generateCommand->add_option("--model", generate.model,
                                "The Mac model the map is for, as its SMBIOS names it (iMac19,1, "
                                "MacBookPro15,2): macOS applies the map only on that model. Default: this "
                                "machine's model, else \"Mac\"");

    ScanOptions watch;
    auto* watchCommand = app.add_subcommand("watch", "Print the ports, then again after every plug or "
                                                     "unplug, marking the ports that changed; Ctrl-C ends");
    watchCommand->add_option("--registry", watch.source.registryFile, registryHelp)->check(CLI::ExistingFile);
    watchCommand->add_flag("--json", watch.json, "Print one JSON object per refresh, one per line");

    RegistryChoice snapshotSource;
    std::filesystem::path snapshotOutput = "korvane-registry.plist";
    auto* snapshotCommand = app.add_subcommand(
        "snapshot", "Save the registry tree as a snapshot file that scan --registry reads");
    snapshotCommand->add_option("--registry", snapshotSource.registryFile, registryHelp)
        ->check(CLI::ExistingFile);
    snapshotCommand->add_option("-o,--output", snapshotOutput,
                                "Where to write it (default korvane-registry.plist)");

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
            return runSnapshot(snapshotSource, snapshotOutput);
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
