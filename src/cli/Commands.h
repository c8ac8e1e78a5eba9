#pragma once

#include "cli/CommandLineSession.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace korvane {

// The subcommands of `korvane`. Each returns the exit status; a UsageError
// (CommandLineSession.h) thrown from them means status 2.

struct ScanOptions {
    RegistryChoice source;
    bool json = false;
};

struct GenerateOptions {
    RegistryChoice source;
    std::string select = "active"; // active, all or none
    std::vector<std::string> ports;
    std::vector<std::string> connectors; // KEY=CODE
    bool withCompanion = false;          // --port and --connector take the companion along
    std::string model;                   // the target Mac model; empty: this machine's
};

struct SnapshotOptions {
    RegistryChoice source;
    std::filesystem::path output = "korvane-registry.plist";
    bool raw = false; // identifiers left unmasked
};

// Each prints its results, and only those, on standard output; the log and
// every note go to standard error.
int runScan(const ScanOptions& options);
int runWatch(const ScanOptions& options);
int runGenerate(const GenerateOptions& options);
int runSnapshot(const SnapshotOptions& options);
int runUpdateIDs();
int runPaths();

} // namespace korvane
