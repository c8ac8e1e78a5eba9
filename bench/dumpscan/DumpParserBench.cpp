// Parsing a whole-machine-sized dump (WholeMachineDump), timed against
// `grep -c '+-o'` over the same file as the floor of any line scan.

#include "base/FileIO.h"
#include "bench/support/WholeMachineDump.h"
#include "dumpscan/DumpParser.h"
#include "dumpscan/USBTreeScanner.h"
#include "support/BuildTree.h"
#include "tools/ProcessRunner.h"

#include <benchmark/benchmark.h>
#include <chrono>
#include <filesystem>
#include <string>

namespace korvane {
namespace {

const WholeMachineDump& dump() {
    static const WholeMachineDump instance;
    return instance;
}

IDsNameResolver& names() {
    static IDsNameResolver resolver(IDsDatabaseLocations{
        std::filesystem::temp_directory_path() / "korvane-dumpscan-bench" / "support",
        std::filesystem::temp_directory_path() / "korvane-dumpscan-bench" / "resources"});
    return resolver;
}

class NoRegistry : public RegistrySource {
  public:
    std::unique_ptr<NativeUSBNode> copyRoot() const override { return nullptr; }
};

double grepSeconds() {
    const auto start = std::chrono::steady_clock::now();
    runProcess("/usr/bin/grep", {"-c", "+-o", dump().path().string()}, std::nullopt, 60);
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

void BM_GrepCountMarkers50MB(benchmark::State& state) {
    for (auto _ : state) {
        benchmark::DoNotOptimize(
            runProcess("/usr/bin/grep", {"-c", "+-o", dump().path().string()}, std::nullopt, 60));
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * dump().text().size()));
}

void BM_ParseControllers50MB(benchmark::State& state) {
    std::size_t ports = 0;
    double parseSeconds = 0;
    double grepTotal = 0;
    for (auto _ : state) {
        const auto start = std::chrono::steady_clock::now();
        const auto controllers = parseControllers(dump().text(), names());
        parseSeconds += std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
        ports = 0;
        for (const auto& controller : controllers) {
            ports += controller.ports.size();
        }
        benchmark::DoNotOptimize(ports);
        state.PauseTiming();
        grepTotal += grepSeconds();
        state.ResumeTiming();
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * dump().text().size()));
    state.counters["ports"] = static_cast<double>(ports);
    state.counters["grep_ms"] = grepTotal / static_cast<double>(state.iterations()) * 1000;
    state.counters["x_grep"] = parseSeconds / grepTotal;
}

void BM_ScanDumpFile50MB(benchmark::State& state) {
    const NoRegistry none;
    const USBTreeScanner scanner{dump().path(), none, names(), buildTreeToolPaths().plutil};
    for (auto _ : state) {
        benchmark::DoNotOptimize(scanner.scanDump(dump().path()));
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * dump().text().size()));
}

// Crafted text that makes a backtracking search quadratic: long lines packed
// with "+-o " before an "@", a port block whose children all carry port
// classes, and a name run with no blank before "<class".
std::string pathologicalDump() {
    std::string text = "+-o XHC1@14000000  <class AppleUSBXHCI>\n  \"vendor-id\" = <86800000>\n"
                       "  \"device-id\" = <6da30000>\n  +-o HS01@14100000  <class AppleUSB20XHCIPort>\n";
    std::string packed;
    while (packed.size() < 15000) {
        packed += "+-o ";
    }
    std::string run(15000, 'a');
    while (text.size() < (8u << 20)) {
        text += "    " + packed + "@14<class AppleUSBXHCI\n";
        text += "    +-o Port@1  <class AppleUSB20XHCIPort>\n";
        text += "    +-o " + run + "<class X>\n";
    }
    return text;
}

void BM_PathologicalDump8MB(benchmark::State& state) {
    const std::string text = pathologicalDump();
    for (auto _ : state) {
        benchmark::DoNotOptimize(parseControllers(text, names()));
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * text.size()));
}

BENCHMARK(BM_PathologicalDump8MB)->Unit(benchmark::kMillisecond)->Iterations(2);
BENCHMARK(BM_GrepCountMarkers50MB)->Unit(benchmark::kMillisecond)->MinTime(2);
BENCHMARK(BM_ParseControllers50MB)->Unit(benchmark::kMillisecond)->MinTime(2);
BENCHMARK(BM_ScanDumpFile50MB)->Unit(benchmark::kMillisecond)->Iterations(3);

} // namespace
} // namespace korvane
