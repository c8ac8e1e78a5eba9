#include "base/FileIO.h"
#include "savedregistry/IORegTextParser.h"
#include "savedregistry/SnapshotCodec.h"

#include <benchmark/benchmark.h>
#include <filesystem>
#include <string>

namespace korvane {
namespace {

// The largest dump of the corpus: 3.4 MB, lines up to 639 KB.
const char* const kLargestDump = "macos/MacBookPro15-2/IOReg.txt";

const char* const kAllDumps[] = {
    "macos/iMac19-1/IOReg.txt",
    "macos/MacBookPro15-2/IOReg.txt",
    "macos/MacPro6-1/IOReg.txt",
    "macos/Macmini7-1/IOReg.txt",
    "macos/iMacPro1-1/IOReg.txt",
    "macos/hackintosh-CML/ioreg_ioservice.txt",
    "macos/hackintosh-CML/ioreg_IOUSB-plane.txt",
    "macos/qemu-MacPro7-1/ioreg.txt",
};

std::string fixture(const char* relative) {
    return readFileBytes(std::filesystem::path(KORVANE_TEST_DATA_DIR) / relative).value_or(std::string());
}

void BM_ParseLargestTextDump(benchmark::State& state) {
    const std::string bytes = fixture(kLargestDump);
    if (bytes.empty()) {
        state.SkipWithError("fixture missing");
        return;
    }
    for (auto _ : state) {
        auto root = parseIORegText(bytes);
        benchmark::DoNotOptimize(root);
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * bytes.size()));
}
BENCHMARK(BM_ParseLargestTextDump)->Unit(benchmark::kMillisecond);

void BM_ParseAllTextDumps(benchmark::State& state) {
    std::vector<std::string> dumps;
    std::size_t total = 0;
    for (const char* dump : kAllDumps) {
        dumps.push_back(fixture(dump));
        total += dumps.back().size();
    }
    if (total == 0) {
        state.SkipWithError("fixtures missing");
        return;
    }
    for (auto _ : state) {
        for (const auto& bytes : dumps) {
            auto root = parseIORegText(bytes);
            benchmark::DoNotOptimize(root);
        }
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * total));
}
BENCHMARK(BM_ParseAllTextDumps)->Unit(benchmark::kMillisecond);

void BM_WriteSnapshotOfLargestDump(benchmark::State& state) {
    const auto root = parseIORegText(fixture(kLargestDump));
    if (!root) {
        state.SkipWithError("fixture missing");
        return;
    }
    std::size_t size = 0;
    for (auto _ : state) {
        const std::string xml = snapshotPropertyList(*root);
        size = xml.size();
        benchmark::DoNotOptimize(xml.data());
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * size));
}
BENCHMARK(BM_WriteSnapshotOfLargestDump)->Unit(benchmark::kMillisecond);

void BM_ReadSnapshotOfLargestDump(benchmark::State& state) {
    const auto root = parseIORegText(fixture(kLargestDump));
    if (!root) {
        state.SkipWithError("fixture missing");
        return;
    }
    const std::string xml = snapshotPropertyList(*root);
    for (auto _ : state) {
        auto back = parseSnapshot(xml);
        benchmark::DoNotOptimize(back);
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * xml.size()));
}
BENCHMARK(BM_ReadSnapshotOfLargestDump)->Unit(benchmark::kMillisecond);

// One value line of a given length, as the 639 KB "FBValidateData" line is:
// the parser, and reading the values it leaves unread, must stay linear in it.
void BM_ParseLongValueLine(benchmark::State& state) {
    const auto length = static_cast<std::size_t>(state.range(0));
    std::string text = "+-o Root  <class IORegistryEntry, id 0x1, retain 1>\n  | {\n  |   \"long\" = <";
    text.append(length, 'a');
    text += ">\n  |   \"quoted\" = (\"";
    for (std::size_t i = 0; i < length / 4; ++i) {
        text += "a\"b,";
    }
    text += "\")\n  | }\n";
    for (auto _ : state) {
        auto root = parseIORegText(text);
        benchmark::DoNotOptimize(root->properties.dictionary());
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * text.size()));
    state.SetComplexityN(state.range(0));
}
BENCHMARK(BM_ParseLongValueLine)
    ->RangeMultiplier(4)
    ->Range(1 << 14, 1 << 22)
    ->Complexity()
    ->Unit(benchmark::kMillisecond);

} // namespace
} // namespace korvane
