// The whole generation run, from the Generate button to Korvane.zip, for four
// controllers of 26 ports each: once with the real tools, once with tools that
// do nothing, so the difference is what the tool runs cost.

#include "collector/CollectorModel.h"
#include "support/BuildTree.h"
#include "support/ManualScheduler.h"
#include "support/TempFolder.h"

#include <benchmark/benchmark.h>
#include <cstdio>

namespace korvane {
namespace {

struct SilentDesktop final : DesktopServices {
    void playSound(const std::string&) override {}
    bool revealInFileManager(const std::filesystem::path&) override { return true; }
    void openURL(const std::string&) override {}
};

USBScanResult fourControllers() {
    USBScanResult result;
    const std::int64_t devices[] = {0xa36d, 0x15ec, 0x43d5, 0x1100};
    const std::int64_t vendors[] = {0x8086, 0x8086, 0x1022, 0x1b73};
    for (int c = 0; c < 4; ++c) {
        USBControllerMap controller;
        controller.name = "XHC" + std::to_string(c + 1);
        controller.location = std::to_string(14 + c);
        controller.vendorID = vendors[c];
        controller.deviceID = devices[c];
        char match[32];
        std::snprintf(match, sizeof match, "pci%04llx,%04llx", static_cast<long long>(vendors[c]),
                      static_cast<long long>(devices[c]));
        controller.ioNameMatch = match;
        controller.providerClass = "AppleUSBXHCIPCI";
        for (std::uint32_t p = 1; p <= 26; ++p) {
            USBPortMap port;
            port.name =
                (p <= 14 ? "HS" : "SS") + std::string(p % 14 < 10 ? "0" : "") + std::to_string(p % 14 + 1);
            port.location = controller.location + std::to_string(p);
            port.connector = p % 3 == 0 ? 9 : 3;
            port.portData = portData(p);
            port.activeDevice = p % 4 == 0 ? "Device " + std::to_string(p) : "";
            controller.ports.push_back(port);
        }
        result.controllers.push_back(controller);
    }
    return result;
}

void generationRun(benchmark::State& state, bool realTools) {
    TempFolder home;
    std::filesystem::create_directories(home.path() / "Desktop");
    ManualScheduler scheduler;
    SilentDesktop desktop;
    IDsNameResolver names({home.path() / "support", home.path() / "resources"});
    ToolPaths tools = buildTreeToolPaths();
    if (!realTools) {
        tools = {"/bin/true", "/bin/true", "/bin/true"};
    }
    const auto scan = fourControllers();
    auto model = CollectorModel::create({.scheduler = scheduler,
                                         .desktop = desktop,
                                         .scanRegistry = [&scan] { return scan; },
                                         .names = names,
                                         .tools = tools,
                                         .desktopURL = [&home] { return home.path() / "Desktop"; }});
    model->scanUSBPorts();
    scheduler.runUntilIdle();
    model->selectAllPorts();
    for (auto _ : state) {
        model->startCollection();
        scheduler.runUntilIdle();
        if (realTools && !model->lastZipURL()) {
            state.SkipWithError("the run failed");
            break;
        }
    }
}

void withRealTools(benchmark::State& state) {
    generationRun(state, true);
}
void withToolsThatDoNothing(benchmark::State& state) {
    generationRun(state, false);
}

BENCHMARK(withRealTools)->Unit(benchmark::kMillisecond);
BENCHMARK(withToolsThatDoNothing)->Unit(benchmark::kMillisecond);

} // namespace
} // namespace korvane
