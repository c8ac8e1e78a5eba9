#include "mapfile/MapFileCodec.h"
#include "mapfile/MapMatching.h"
#include "mapfile/PortMapPackage.h"
#include "package/KextInfoPlist.h"
#include "records/PortNumber.h"

#include <benchmark/benchmark.h>

namespace korvane {
namespace {

// A machine of `controllers` controllers with 26 ports each (the most an
// Intel chipset's template has), every port checked, named and seen.
std::vector<USBControllerMap> machine(int controllers) {
    std::vector<USBControllerMap> scanned;
    for (int c = 0; c < controllers; ++c) {
        USBControllerMap controller;
        controller.name = "XHC" + std::to_string(c);
        controller.location = std::to_string(c);
        controller.vendorID = 0x8086;
        controller.deviceID = 0xa36d + c;
        for (std::uint32_t p = 1; p <= 26; ++p) {
            USBPortMap port;
            port.name = (p <= 16 ? "HS" : "SS") + std::to_string(p);
            port.connector = 3;
            port.portData = portData(p);
            controller.ports.push_back(port);
        }
        scanned.push_back(controller);
    }
    return scanned;
}

USBMapFile session(const std::vector<USBControllerMap>& scanned) {
    USBMapFile map;
    for (const auto& controller : scanned) {
        map.machineControllers.push_back(controller);
        for (const auto& port : controller.ports) {
            const auto key = usbPortStableID(controller, port);
            map.session.edit(key, [](SessionPort& entry) {
                entry = {.selected = true,
                         .connector = 10,
                         .nickname = "rear, blue, top",
                         .sighting = PortSighting{"SanDisk Ultra", std::chrono::system_clock::now()}};
            });
        }
    }
    return map;
}

void BM_WriteMapFile(benchmark::State& state) {
    const USBMapFile map = session(machine(static_cast<int>(state.range(0))));
    for (auto _ : state) {
        benchmark::DoNotOptimize(mapFileText(map));
    }
}
BENCHMARK(BM_WriteMapFile)->Arg(1)->Arg(8);

void BM_ReadAndMatchMapFile(benchmark::State& state) {
    const auto scanned = machine(static_cast<int>(state.range(0)));
    const std::string text = mapFileText(session(scanned));
    for (auto _ : state) {
        const auto parse = parseMapFile(text);
        benchmark::DoNotOptimize(matchMapToScan(*parse.map, scanned));
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * text.size()));
}
BENCHMARK(BM_ReadAndMatchMapFile)->Arg(1)->Arg(8);

void BM_ImportOurPackage(benchmark::State& state) {
    const auto scanned = machine(static_cast<int>(state.range(0)));
    const std::string xml = propertyListXML(makeKextInfoPlist(scanned, "iMac19,1").get());
    for (auto _ : state) {
        const auto parse = parsePackageInfoPlist(xml);
        benchmark::DoNotOptimize(matchPackageToScan(*parse.package, scanned));
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * xml.size()));
}
BENCHMARK(BM_ImportOurPackage)->Arg(1)->Arg(8);

} // namespace
} // namespace korvane
