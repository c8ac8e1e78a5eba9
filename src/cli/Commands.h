#pragma once

#include "cli/CommandLineSession.h"
#include "cli/MapSessionOptions.h"

#include <cstdint>
#include <filesystem>
#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

namespace korvane {

// The subcommands of `korvane`. Each returns the exit status; a UsageError
// (CommandLineSession.h) thrown from them means status 2.

// Where a command writes: its results, and only those, on `out`; the log and
// every note on `err`.
struct CommandStreams {
    std::ostream& out;
    std::ostream& err;
};

struct ScanOptions {
    RegistryChoice source;
    bool json = false;
    MapOptions session;
};

struct GenerateOptions {
    RegistryChoice source;
    std::string select = "active"; // active, all or none
    std::vector<std::string> ports;
    std::vector<std::string> connectors; // KEY=CODE
    MapOptions session;
    bool withCompanion = false;  // --port and --connector take the companion along
    std::string model;           // the target Mac model; empty: this machine's
    bool allowOverLimit = false; // write a controller of more than 15 ports all the same
};

struct SnapshotOptions {
    RegistryChoice source;
    std::filesystem::path output = "korvane-registry.plist";
    bool raw = false;   // identifiers left unmasked
    bool force = false; // an existing output file written over
};

struct MapCommandOptions {
    RegistryChoice source;
    std::optional<std::filesystem::path> map;
    std::optional<std::filesystem::path> saveMap;
    std::string model; // the target Mac model; empty: the map's or none
};

int runScan(const ScanOptions& options, CommandStreams streams);
int runWatch(const ScanOptions& options, CommandStreams streams);
int runGenerate(const GenerateOptions& options, CommandStreams streams);
int runSnapshot(const SnapshotOptions& options, CommandStreams streams);
int runUpdateIDs(CommandStreams streams);
int runPaths(CommandStreams streams);
// Map by plugging: names for the sockets are read from `in`, a line each.
int runMap(const MapCommandOptions& options, CommandStreams streams, std::istream& in);

} // namespace korvane
