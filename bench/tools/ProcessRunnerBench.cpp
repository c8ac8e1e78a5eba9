// What one tool run costs: the generator runs plutil once per text-like file
// and ditto once per package, so this is the floor of a generation's time.

#include "support/BuildTree.h"
#include "tools/ProcessRunner.h"

#include <benchmark/benchmark.h>
#include <cstdio>
#include <filesystem>

namespace {

void trivialTool(benchmark::State& state) {
    for (auto _ : state) {
        benchmark::DoNotOptimize(korvane::runProcess("/bin/true", {}, std::nullopt, 10));
    }
}
BENCHMARK(trivialTool)->Unit(benchmark::kMicrosecond);

void toolWithOutput(benchmark::State& state) {
    const std::string bytes = std::to_string(state.range(0));
    for (auto _ : state) {
        benchmark::DoNotOptimize(
            korvane::runProcess("/usr/bin/head", {"-c", bytes, "/dev/zero"}, std::nullopt, 10));
    }
    state.SetBytesProcessed(state.iterations() * state.range(0));
}
BENCHMARK(toolWithOutput)->Arg(1 << 10)->Arg(1 << 20)->Arg(16 << 20)->Unit(benchmark::kMicrosecond);

void plutilLint(benchmark::State& state) {
    const auto plist = std::filesystem::temp_directory_path() / "korvane-bench-Info.plist";
    if (FILE* file = std::fopen(plist.c_str(), "w")) {
        std::fputs("<?xml version=\"1.0\"?><plist version=\"1.0\"><dict><key>A</key><true/></dict></plist>",
                   file);
        std::fclose(file);
    }
    const auto plutil = korvane::buildTreeToolPaths().plutil;
    for (auto _ : state) {
        benchmark::DoNotOptimize(korvane::runProcess(plutil, {"-lint", plist.string()}, std::nullopt, 60));
    }
    std::filesystem::remove(plist);
}
BENCHMARK(plutilLint)->Unit(benchmark::kMicrosecond);

} // namespace
