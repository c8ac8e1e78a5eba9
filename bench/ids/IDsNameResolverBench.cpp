#include "base/FileIO.h"
#include "ids/IDsDatabaseText.h"
#include "ids/IDsNameResolver.h"
#include "support/BuildTree.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <random>
#include <string>
#include <unistd.h>
#include <utility>
#include <vector>

namespace korvane {
namespace {

namespace fs = std::filesystem;
using Pair = std::pair<std::int64_t, std::int64_t>;

// The application's copies, as the build puts them beside the programs.
std::optional<std::string> realDatabase(const char* name) {
    return readFileBytes(buildTreeResourceDirectory() / "Tools" / name);
}

// Every vendor/device pair the file lists, shuffled so successive lookups
// don't walk neighbouring lines.
std::vector<Pair> listedPairs(const std::string& text) {
    std::vector<Pair> pairs;
    std::int64_t vendor = -1;
    std::size_t begin = 0;
    while (begin < text.size()) {
        std::size_t end = std::min(text.find('\n', begin), text.size());
        const std::string line = text.substr(begin, end - begin);
        begin = end + 1;
        if (line.starts_with("\t\t")) {
            continue;
        }
        const bool isDevice = line.starts_with("\t");
        const std::string field = isDevice ? line.substr(1, 4) : line.substr(0, 4);
        if (field.size() != 4 || !std::all_of(field.begin(), field.end(), ::isxdigit) ||
            (line.size() > field.size() + (isDevice ? 1 : 0) &&
             line[field.size() + (isDevice ? 1 : 0)] != ' ')) {
            if (!isDevice && !line.empty() && line[0] != '#') {
                vendor = -1;
            }
            continue;
        }
        if (!isDevice) {
            vendor = std::stoll(field, nullptr, 16);
            pairs.emplace_back(vendor, 0xFFFF);
        } else if (vendor >= 0) {
            pairs.emplace_back(vendor, std::stoll(field, nullptr, 16));
        }
    }
    std::shuffle(pairs.begin(), pairs.end(), std::mt19937(7));
    return pairs;
}

class ScratchSupportFolder {
  public:
    ScratchSupportFolder() {
        std::string pattern = (fs::temp_directory_path() / "korvane-bench-XXXXXX").string();
        if (mkdtemp(pattern.data())) {
            path_ = pattern;
        }
    }
    ~ScratchSupportFolder() {
        std::error_code ignored;
        fs::remove_all(path_, ignored);
    }
    const fs::path& path() const { return path_; }

  private:
    fs::path path_;
};

// Cold lookups through the resolver: each pair is asked for the first time,
// after the file's first lookup has been paid. When all pairs are cached, a
// reload (untimed) empties the caches again.
void BM_ResolverColdLookup(benchmark::State& state, const char* file) {
    const auto text = realDatabase(file);
    if (!text) {
        state.SkipWithError("no application copy of the database in the build tree");
        return;
    }
    const auto pairs = listedPairs(*text);
    ScratchSupportFolder support;
    IDsNameResolver resolver({support.path(), buildTreeResourceDirectory()});
    const bool isUSB = std::string(file) == "usb.ids";
    auto lookup = [&](const Pair& pair) {
        return isUSB ? resolver.usbName(pair.first, pair.second) : resolver.pciName(pair.first, pair.second);
    };
    lookup({0xFFFF, 0xFFFF});
    std::size_t next = 0;
    for (auto _ : state) {
        if (next == pairs.size()) {
            state.PauseTiming();
            resolver.reload();
            lookup({0xFFFF, 0xFFFF});
            next = 0;
            state.ResumeTiming();
        }
        benchmark::DoNotOptimize(lookup(pairs[next++]));
    }
    state.counters["pairs"] = static_cast<double>(pairs.size());
}
BENCHMARK_CAPTURE(BM_ResolverColdLookup, usb, "usb.ids");
BENCHMARK_CAPTURE(BM_ResolverColdLookup, pci, "pci.ids");

// Each listed pair timed on its own, for the median and the tail.
void BM_ColdLookupDistribution(benchmark::State& state, const char* file) {
    const auto text = realDatabase(file);
    if (!text) {
        state.SkipWithError("no application copy of the database in the build tree");
        return;
    }
    const auto pairs = listedPairs(*text);
    std::vector<double> micros;
    for (auto _ : state) {
        const IDsDatabaseText database(*text);
        benchmark::DoNotOptimize(database.name(0xFFFF, 0xFFFF));
        micros.clear();
        for (const auto& [vendor, device] : pairs) {
            const auto start = std::chrono::steady_clock::now();
            benchmark::DoNotOptimize(database.name(vendor, device));
            micros.push_back(
                std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now() - start).count());
        }
    }
    std::sort(micros.begin(), micros.end());
    state.counters["median_us"] = micros[micros.size() / 2];
    state.counters["p99_us"] = micros[micros.size() * 99 / 100];
    state.counters["max_us"] = micros.back();
}
BENCHMARK_CAPTURE(BM_ColdLookupDistribution, usb, "usb.ids")->Iterations(3)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_ColdLookupDistribution, pci, "pci.ids")->Iterations(3)->Unit(benchmark::kMillisecond);

// The file's first lookup: validating the text and building its index.
void BM_FirstLookupOfTheFile(benchmark::State& state, const char* file) {
    const auto text = realDatabase(file);
    if (!text) {
        state.SkipWithError("no application copy of the database in the build tree");
        return;
    }
    for (auto _ : state) {
        const IDsDatabaseText database(*text);
        benchmark::DoNotOptimize(database.name(0x1D6B, 0x0003));
    }
}
BENCHMARK_CAPTURE(BM_FirstLookupOfTheFile, usb, "usb.ids")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_FirstLookupOfTheFile, pci, "pci.ids")->Unit(benchmark::kMillisecond);

void BM_ResolverCachedLookup(benchmark::State& state) {
    ScratchSupportFolder support;
    IDsNameResolver resolver({support.path(), buildTreeResourceDirectory()});
    resolver.usbName(0x1D6B, 0x0003);
    for (auto _ : state) {
        benchmark::DoNotOptimize(resolver.usbName(0x1D6B, 0x0003));
    }
}
BENCHMARK(BM_ResolverCachedLookup);

} // namespace
} // namespace korvane
