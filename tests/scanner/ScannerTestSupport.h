#pragma once

#include "ids/IDsNameResolver.h"
#include "scanner/NativeUSBNode.h"

#include <atomic>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <unistd.h>

namespace korvane {

// A resolver over tiny hand-made databases in a private temporary folder; the
// user's copy folder stays empty so only these two files count.
class TinyIDsDatabases {
  public:
    TinyIDsDatabases() {
        static std::atomic<int> counter{0};
        root_ = std::filesystem::temp_directory_path() /
                ("korvane-scanner-test-" + std::to_string(::getpid()) + "-" + std::to_string(counter++) +
                 "-" + std::to_string(std::chrono::steady_clock::now().time_since_epoch().count()));
        std::filesystem::create_directories(root_ / "support");
        std::filesystem::create_directories(root_ / "resources" / "Tools");
        std::ofstream(root_ / "resources" / "Tools" / "pci.ids")
            << "# tiny test copy\n"
               "8086  Intel Corporation\n"
               "\ta36d  Cannon Lake PCH USB 3.1 xHCI Host Controller\n"
               "1022  Advanced Micro Devices, Inc. [AMD]\n"
               "\t149c  Matisse USB 3.0 Host Controller\n";
        std::ofstream(root_ / "resources" / "Tools" / "usb.ids")
            << "# tiny test copy\n"
               "046d  Logitech, Inc.\n"
               "\tc52b  Unifying Receiver\n"
               "1b21  ASMedia Technology Inc.\n"
               "\t1242  ASM1142 USB 3.1 Host Controller\n"
               "1d6b  Linux Foundation\n";
        names_ =
            std::make_unique<IDsNameResolver>(IDsDatabaseLocations{root_ / "support", root_ / "resources"});
    }
    ~TinyIDsDatabases() {
        std::error_code ignored;
        std::filesystem::remove_all(root_, ignored);
    }
    TinyIDsDatabases(const TinyIDsDatabases&) = delete;
    TinyIDsDatabases& operator=(const TinyIDsDatabases&) = delete;

    IDsNameResolver& names() { return *names_; }

  private:
    std::filesystem::path root_;
    std::unique_ptr<IDsNameResolver> names_;
};

inline std::unique_ptr<NativeUSBNode> makeRoot() {
    return std::make_unique<NativeUSBNode>("Root", "", "IORegistryEntry", PropertyDictionary{}, nullptr);
}

// An xHCI PCI device with its identity as the registry stores it: 4-byte
// little-endian buffers.
inline NativeUSBNode& addXHCIPCIDevice(NativeUSBNode& parent, const std::string& name,
                                       const std::string& location, std::uint32_t vendor,
                                       std::uint32_t device) {
    auto bytes = [](std::uint32_t v) { return ByteBuffer{std::uint8_t(v), std::uint8_t(v >> 8), 0, 0}; };
    return parent.addChild(name, location, "IOPCIDevice",
                           {{"class-code", ByteBuffer{0x30, 0x03, 0x0C, 0x00}},
                            {"vendor-id", bytes(vendor)},
                            {"device-id", bytes(device)}});
}

} // namespace korvane
