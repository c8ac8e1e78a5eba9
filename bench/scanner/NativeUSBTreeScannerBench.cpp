#include "scanner/NativeUSBTreeScanner.h"

#include <benchmark/benchmark.h>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>
#include <unistd.h>

namespace korvane {
namespace {

ByteBuffer le32(std::uint32_t value) {
    return portData(value);
}

std::string hexLocation(std::uint32_t value) {
    char text[16];
    std::snprintf(text, sizeof text, "%X", value);
    return text;
}

// One machine-like slice of a registry: an xHCI controller with a port table
// on every other one, USB 2 and USB 3 port nodes, devices with interfaces and
// driver nodes, a hub with devices of its own, and the ACPI, PCI and service
// entries that make up most of a real service plane.
void addSlice(NativeUSBNode& root, std::uint32_t index) {
    static constexpr std::uint32_t usbDevices[][2] = {
        {0x046d, 0xc52b}, {0x05ac, 0x12a8}, {0x8087, 0x0026}, {0x0bda, 0x8153}, {0x1234, 0x5678}};
    static constexpr std::uint32_t controllers[][2] = {
        {0x8086, 0xa36d}, {0x8086, 0x9ded}, {0x1022, 0x149c}, {0x1b21, 0x2142}, {0x8086, 0x15ec}};

    auto& bridge = root.addChild("RP" + std::to_string(index), hexLocation(index), "IOPCI2PCIBridge",
                                 {{"class-code", le32(0x060400)}, {"vendor-id", le32(0x8086)}});
    for (int i = 0; i < 40; ++i) {
        auto& acpi = bridge.addChild("PNP0C0" + std::to_string(i % 10), "", "IOACPIPlatformDevice",
                                     {{"IOName", "PNP0C0"}, {"_UID", std::to_string(i)}});
        acpi.addChild("IOService", "", "IOService", {{"IOProviderClass", "IOACPIPlatformDevice"}});
        acpi.addChild("Setting", "", "IOResources", {{"IOUserClientClass", "IOUserClient"}});
    }
    for (int i = 0; i < 10; ++i) {
        bridge.addChild(
            "pci8086,a3" + std::to_string(i), std::to_string(i), "IOPCIDevice",
            {{"class-code", le32(0x0C0500)}, {"vendor-id", le32(0x8086)}, {"device-id", le32(0xa300 + i)}});
    }

    const auto& identity = controllers[index % 5];
    auto& pci = bridge.addChild(
        "XHC@14", hexLocation(0x14 + index), "IOPCIDevice",
        {{"class-code", le32(0x0C0330)},
         {"vendor-id", le32(identity[0])},
         {"device-id", le32(identity[1])},
         {"compatible", ByteBuffer{'p', 'c', 'i', '8', '0', '8', '6', ',', 'a', '3', '6', 'd', 0}}});
    PropertyDictionary table;
    if (index % 2 == 0) {
        for (int i = 1; i <= 14; ++i) {
            table["HS" + std::string(i < 10 ? "0" : "") + std::to_string(i)] =
                PropertyDictionary{{"port", le32(i)}, {"UsbConnector", i > 12 ? 255 : 3}};
        }
    }
    auto& service = pci.addChild("XHC", "", "AppleIntelCNLUSBXHCI",
                                 {{"ports", std::move(table)}, {"IOClass", "AppleIntelCNLUSBXHCI"}});
    for (int i = 1; i <= 26; ++i) {
        const bool isUSB3 = i > 14;
        const std::string name = (isUSB3 ? "SS" : "HS") + std::string((isUSB3 ? i - 14 : i) < 10 ? "0" : "") +
                                 std::to_string(isUSB3 ? i - 14 : i);
        auto& port = service.addChild(name + "@" + std::to_string(i), hexLocation(0x14000000 + (i << 20)),
                                      isUSB3 ? "AppleUSB30XHCIPort" : "AppleUSB20XHCIPort",
                                      {{"port", le32(i)}, {"UsbConnector", 3}});
        if (i % 4 == 1) {
            const auto& ids = usbDevices[(index + i) % 5];
            auto& device = port.addChild("Device", hexLocation(0x14000000 + (i << 20)), "IOUSBHostDevice",
                                         {{"idVendor", std::int64_t{ids[0]}},
                                          {"idProduct", std::int64_t{ids[1]}},
                                          {"USB Address", i},
                                          {"IOProviderClass", "IOUSBHostDevice"}});
            for (int k = 0; k < 2; ++k) {
                auto& interface =
                    device.addChild("Interface", "", "IOUSBHostInterface", {{"bInterfaceNumber", k}});
                interface.addChild("AppleUSBHIDDriver", "", "AppleUserUSBHostHIDDevice", {});
            }
        } else if (i == 6) {
            auto& hub = port.addChild("USB2.1 Hub", "", "IOUSBHostDevice",
                                      {{"idVendor", 0x05e3}, {"idProduct", 0x0610}});
            for (int k = 1; k <= 4; ++k) {
                auto& hubPort =
                    hub.addChild("HS0" + std::to_string(k), "", "AppleUSBHostPort", {{"port", le32(k)}});
                if (k == 2) {
                    hubPort.addChild("Keyboard", "", "IOUSBHostDevice", {{"USB Product Name", "Keyboard"}});
                }
            }
        }
    }
}

std::size_t countNodes(const NativeUSBNode& node) {
    std::size_t count = 1;
    for (const auto& child : node.children) {
        count += countNodes(*child);
    }
    return count;
}

std::unique_ptr<NativeUSBNode> syntheticTree(std::size_t targetNodes) {
    auto root = std::make_unique<NativeUSBNode>("Root", "", "IORegistryEntry", PropertyDictionary{}, nullptr);
    std::uint32_t index = 0;
    std::size_t count = 1;
    while (count < targetNodes) {
        addSlice(*root, index++);
        count += countNodes(*root->children.back());
    }
    return root;
}

// The real databases, as the application ships them, in a private resource folder.
class RealDatabases {
  public:
    RealDatabases() {
        root_ =
            std::filesystem::temp_directory_path() / ("korvane-scanner-bench-" + std::to_string(::getpid()));
        std::filesystem::create_directories(root_ / "support");
        std::filesystem::create_directories(root_ / "resources" / "Tools");
        for (const char* name : {"pci.ids", "usb.ids"}) {
            std::filesystem::copy_file(std::filesystem::path("/usr/share/hwdata") / name,
                                       root_ / "resources" / "Tools" / name,
                                       std::filesystem::copy_options::overwrite_existing);
        }
        names_ =
            std::make_unique<IDsNameResolver>(IDsDatabaseLocations{root_ / "support", root_ / "resources"});
    }
    ~RealDatabases() {
        names_.reset();
        std::error_code ignored;
        std::filesystem::remove_all(root_, ignored);
    }
    IDsNameResolver& names() { return *names_; }

  private:
    std::filesystem::path root_;
    std::unique_ptr<IDsNameResolver> names_;
};

class NoSource : public RegistrySource {
  public:
    std::unique_ptr<NativeUSBNode> copyRoot() const override { return nullptr; }
};

void scanSyntheticTree(benchmark::State& state) {
    static RealDatabases databases;
    const auto root = syntheticTree(static_cast<std::size_t>(state.range(0)));
    const NoSource source;
    const NativeUSBTreeScanner scanner(source, databases.names());
    std::size_t controllers = 0;
    for (auto _ : state) {
        const auto result = scanner.scanTree(*root);
        controllers = result.controllers.size();
        benchmark::DoNotOptimize(result);
    }
    state.counters["nodes"] = static_cast<double>(countNodes(*root));
    state.counters["controllers"] = static_cast<double>(controllers);
    state.SetComplexityN(state.range(0));
}
BENCHMARK(scanSyntheticTree)
    ->Arg(1'000)
    ->Arg(10'000)
    ->Arg(100'000)
    ->Arg(300'000)
    ->Unit(benchmark::kMillisecond)
    ->Complexity(benchmark::oN);

// A hostile snapshot: one controller whose ports nest in a single chain with
// no device anywhere. Each port asks for the device below it; the cost must
// stay linear in the chain's length.
void scanNestedEmptyPorts(benchmark::State& state) {
    static RealDatabases databases;
    auto root = std::make_unique<NativeUSBNode>("Root", "", "IORegistryEntry", PropertyDictionary{}, nullptr);
    auto& pci =
        root->addChild("XHC", "14", "IOPCIDevice",
                       {{"class-code", le32(0x0C0330)}, {"vendor-id", 0x8086}, {"device-id", 0xa36d}});
    NativeUSBNode* current = &pci.addChild("XHC", "", "AppleUSBXHCI", {});
    for (std::int64_t i = 0; i < state.range(0); ++i) {
        current = &current->addChild("HS" + std::to_string(i % 100000), "", "AppleUSBHostPort", {});
    }
    const NoSource source;
    const NativeUSBTreeScanner scanner(source, databases.names());
    for (auto _ : state) {
        benchmark::DoNotOptimize(scanner.scanTree(*root));
    }
    state.SetComplexityN(state.range(0));
}
BENCHMARK(scanNestedEmptyPorts)
    ->Arg(1'000)
    ->Arg(10'000)
    ->Unit(benchmark::kMillisecond)
    ->Complexity(benchmark::oN);

// A fresh resolver per scan: every name is a cache miss that walks the text.
void scanSyntheticTreeColdNames(benchmark::State& state) {
    const auto root = syntheticTree(static_cast<std::size_t>(state.range(0)));
    const NoSource source;
    for (auto _ : state) {
        state.PauseTiming();
        auto databases = std::make_unique<RealDatabases>();
        state.ResumeTiming();
        const NativeUSBTreeScanner scanner(source, databases->names());
        benchmark::DoNotOptimize(scanner.scanTree(*root));
        state.PauseTiming();
        databases.reset();
        state.ResumeTiming();
    }
}
BENCHMARK(scanSyntheticTreeColdNames)->Arg(100'000)->Unit(benchmark::kMillisecond)->Iterations(3);

} // namespace
} // namespace korvane
