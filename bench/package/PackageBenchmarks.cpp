// What a generation costs: the package for a machine with four busy
// controllers, tool runs and file writes included, and its parts alone.

#include "base/FileIO.h"
#include "package/KextInfoPlist.h"
#include "package/KextPackageWriter.h"
#include "package/OutputSanitizer.h"
#include "package/SensitiveTextRedaction.h"
#include "support/BuildTree.h"

#include <benchmark/benchmark.h>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

namespace {

using namespace korvane;
namespace fs = std::filesystem;

std::vector<USBControllerMap> fourControllersOf26Ports() {
    const std::int64_t devices[] = {0xa36d, 0x15ec, 0x43ed, 0x7ae0};
    std::vector<USBControllerMap> controllers;
    for (int c = 0; c < 4; ++c) {
        USBControllerMap controller;
        controller.name = "XHC" + std::to_string(c + 1);
        controller.location = std::to_string(14 + c);
        controller.vendorID = 0x8086;
        controller.deviceID = devices[c];
        controller.providerClass = "AppleUSBXHCISPT";
        for (std::uint32_t p = 1; p <= 26; ++p) {
            char name[8];
            std::snprintf(name, sizeof name, "%s%02u", p <= 14 ? "HS" : "SS", p <= 14 ? p : p - 14);
            controller.ports.push_back({name, controller.location, p <= 14 ? 0 : 3, portData(p), "",
                                        p % 5 == 0 ? "USB Receiver" : ""});
        }
        controllers.push_back(std::move(controller));
    }
    return controllers;
}

class ScratchFolder {
  public:
    ScratchFolder()
        : path_(fs::temp_directory_path() /
                ("korvane-package-bench-" +
                 std::to_string(std::chrono::steady_clock::now().time_since_epoch().count()))) {
        fs::create_directories(path_);
    }
    ~ScratchFolder() {
        std::error_code ignored;
        fs::remove_all(path_, ignored);
    }
    const fs::path& path() const { return path_; }

  private:
    fs::path path_;
};

void BM_GenerateKextFourControllers26Ports(benchmark::State& state) {
    const auto controllers = fourControllersOf26Ports();
    const ToolPaths tools = buildTreeToolPaths();
    if (!fs::exists(tools.plutil)) {
        state.SkipWithError("the plutil stand-in is not built");
        return;
    }
    ScratchFolder folder;
    for (auto _ : state) {
        generateKorvaneKext(folder.path(), std::nullopt, controllers, tools, "iMac19,1");
    }
}
BENCHMARK(BM_GenerateKextFourControllers26Ports)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_InfoPlistTreeAndXML(benchmark::State& state) {
    const auto controllers = fourControllersOf26Ports();
    for (auto _ : state) {
        const PlistPtr root = makeKextInfoPlist(controllers, "iMac19,1");
        benchmark::DoNotOptimize(propertyListXML(root.get()));
    }
}
BENCHMARK(BM_InfoPlistTreeAndXML)->Unit(benchmark::kMicrosecond);

void BM_SanitizeWorkFolder(benchmark::State& state) {
    const ToolPaths tools = buildTreeToolPaths();
    if (!fs::exists(tools.plutil)) {
        state.SkipWithError("the plutil stand-in is not built");
        return;
    }
    ScratchFolder folder;
    generateKorvaneKext(folder.path(), std::nullopt, fourControllersOf26Ports(), tools, "iMac19,1");
    for (auto _ : state) {
        sanitizeDirectory(folder.path(), tools.plutil);
    }
}
BENCHMARK(BM_SanitizeWorkFolder)->Unit(benchmark::kMillisecond)->UseRealTime();

// A log of the size a long session leaves, with something to mask now and then.
void BM_RedactLogText(benchmark::State& state) {
    std::string log;
    for (int i = 0; log.size() < static_cast<std::size_t>(state.range(0)); ++i) {
        log += "[12:00:00] Port HS" + std::to_string(i % 14) + " selected on XHC1 (8086:a36d)\n";
        if (i % 50 == 0) {
            log += "Hardware UUID: 01234567-89AB-CDEF-0123-456789ABCDEF\nen0 a4:83:e7:0b:1c:2d\n";
        }
    }
    for (auto _ : state) {
        benchmark::DoNotOptimize(redactSensitiveText(log));
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) *
                            static_cast<std::int64_t>(log.size()));
}
BENCHMARK(BM_RedactLogText)->Arg(16 << 10)->Arg(1 << 20)->Unit(benchmark::kMillisecond);

} // namespace
