#include "platform/PlatformFolders.h"
#include "platform/linux/SysfsRegistrySource.h"
#include "scanner/NativeUSBTreeScanner.h"
#include "scanner/PropertyReaders.h"

#include <atomic>
#include <benchmark/benchmark.h>
#include <cstdlib>
#include <filesystem>
#include <new>

// Heap in use and its high-water mark, for the peak memory of one build and
// scan. Counting every allocation of the process is fine here: the benchmark
// runs one thing at a time.
namespace {
std::atomic<std::size_t> heapInUse{0};
std::atomic<std::size_t> heapPeak{0};

void* countedAllocation(std::size_t size) {
    auto* block = static_cast<std::size_t*>(std::malloc(size + sizeof(std::max_align_t)));
    if (!block) {
        throw std::bad_alloc();
    }
    *block = size;
    const std::size_t now = heapInUse.fetch_add(size) + size;
    std::size_t peak = heapPeak.load();
    while (now > peak && !heapPeak.compare_exchange_weak(peak, now)) {
    }
    return reinterpret_cast<char*>(block) + sizeof(std::max_align_t);
}

void countedRelease(void* pointer) {
    if (!pointer) {
        return;
    }
    auto* block = reinterpret_cast<std::size_t*>(static_cast<char*>(pointer) - sizeof(std::max_align_t));
    heapInUse.fetch_sub(*block);
    std::free(block);
}
} // namespace

void* operator new(std::size_t size) {
    return countedAllocation(size);
}
void* operator new[](std::size_t size) {
    return countedAllocation(size);
}
void operator delete(void* pointer) noexcept {
    countedRelease(pointer);
}
void operator delete[](void* pointer) noexcept {
    countedRelease(pointer);
}
void operator delete(void* pointer, std::size_t) noexcept {
    countedRelease(pointer);
}
void operator delete[](void* pointer, std::size_t) noexcept {
    countedRelease(pointer);
}

namespace korvane {
namespace {

const std::filesystem::path fixture = KORVANE_LIVE_BENCH_SYSFS;

void buildTree(benchmark::State& state) {
    const SysfsRegistrySource source(fixture);
    std::size_t nodes = 0;
    for (auto _ : state) {
        auto root = source.copyRoot();
        nodes = root ? flatten(*root).size() : 0;
        benchmark::DoNotOptimize(root);
    }
    state.counters["nodes"] = static_cast<double>(nodes);
}
BENCHMARK(buildTree)->Unit(benchmark::kMillisecond);

void buildTreeAndScan(benchmark::State& state) {
    const SysfsRegistrySource source(fixture);
    const auto noIDs = std::filesystem::temp_directory_path() / "korvane-bench-no-ids";
    IDsNameResolver names(IDsDatabaseLocations{noIDs, noIDs});
    const NativeUSBTreeScanner scanner(source, names);
    std::size_t peakBytes = 0;
    std::size_t ports = 0;
    for (auto _ : state) {
        const std::size_t before = heapInUse.load();
        heapPeak.store(before);
        const USBScanResult result = scanner.scan();
        peakBytes = std::max(peakBytes, heapPeak.load() - before);
        ports = 0;
        for (const auto& controller : result.controllers) {
            ports += controller.ports.size();
        }
        benchmark::DoNotOptimize(result);
    }
    state.counters["peak_heap_KiB"] = static_cast<double>(peakBytes) / 1024.0;
    state.counters["ports"] = static_cast<double>(ports);
}
BENCHMARK(buildTreeAndScan)->Unit(benchmark::kMillisecond);

// The firmware's connector types on the capture with ACPI port nodes, in wall
// time (the work is acpiexec's, in a child): the scan without them, the scan
// of a new source each time (one acpiexec run for all eight ports), and scans
// of one kept source, which keeps the run's result.
const std::filesystem::path firmwareFixture = KORVANE_LIVE_BENCH_FIRMWARE_SYSFS;

void scanFirmwareFixture(benchmark::State& state, bool withAcpiexec, bool isSourceKept) {
    const auto acpiexec = programOnPath("acpiexec", Environment::process());
    if (withAcpiexec && !acpiexec) {
        state.SkipWithError("acpiexec (acpica-tools) is not installed");
        return;
    }
    const auto noIDs = std::filesystem::temp_directory_path() / "korvane-bench-no-ids";
    IDsNameResolver names(IDsDatabaseLocations{noIDs, noIDs});
    const std::string tool = withAcpiexec ? *acpiexec : std::string();
    const SysfsRegistrySource kept(firmwareFixture, tool);
    if (isSourceKept) {
        (void)kept.copyRoot(); // the one run, before the timing
    }
    std::size_t firmwareTyped = 0;
    for (auto _ : state) {
        const SysfsRegistrySource fresh(firmwareFixture, tool);
        const USBScanResult result = NativeUSBTreeScanner(isSourceKept ? kept : fresh, names).scan();
        firmwareTyped = 0;
        for (const auto& port : result.controllers.at(0).ports) {
            firmwareTyped += port.connectorSource == ConnectorSource::firmware;
        }
    }
    state.counters["firmware_typed_ports"] = static_cast<double>(firmwareTyped);
}
BENCHMARK_CAPTURE(scanFirmwareFixture, withoutAcpiexec, false, false)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK_CAPTURE(scanFirmwareFixture, acpiexecEachScan, true, false)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Iterations(5);
BENCHMARK_CAPTURE(scanFirmwareFixture, acpiexecKept, true, true)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

} // namespace
} // namespace korvane
