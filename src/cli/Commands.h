#pragma once

#include "cli/CommandLineSession.h"
#include "cli/MapSessionOptions.h"

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
    MapOptions session;
};

struct GenerateOptions {
    RegistryChoice source;
    std::string select = "active"; // active, all or none
    std::vector<std::string> ports;
    std::vector<std::string> connectors; // KEY=CODE
    MapOptions session;
};

int runScan(const ScanOptions& options);
int runWatch(const ScanOptions& options);
int runGenerate(const GenerateOptions& options);
int runSnapshot(const RegistryChoice& source, const std::filesystem::path& output);
int runUpdateIDs();
int runPaths();

} // namespace korvane
