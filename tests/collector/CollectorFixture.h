#pragma once

#include "collector/CollectorModel.h"
#include "support/BuildTree.h"
#include "support/ManualScheduler.h"
#include "support/TempFolder.h"

#include <deque>
#include <gtest/gtest.h>
#include <sstream>

namespace korvane {

struct RecordingDesktop final : DesktopServices {
    std::vector<std::string> sounds;
    std::vector<std::filesystem::path> revealed;
    std::vector<std::string> opened;
    void playSound(const std::string& name) override { sounds.push_back(name); }
    void revealInFileManager(const std::filesystem::path& file) override { revealed.push_back(file); }
    void openURL(const std::string& address) override { opened.push_back(address); }
};

// A hotplug source the test fires by hand.
struct ManualHotplugSource final : HotplugSource {
    std::function<void()> onChange;
    int starts = 0;
    void start(std::function<void()> handler) override {
        ++starts;
        onChange = std::move(handler);
    }
};

inline USBPortMap makePort(std::string name, std::uint32_t number, std::string device = "",
                           std::int64_t connector = 3) {
    USBPortMap port;
    port.name = std::move(name);
    port.location = "14" + std::to_string(number) + "00000";
    port.connector = connector;
    port.portData = portData(number);
    port.activeDevice = std::move(device);
    return port;
}

inline USBControllerMap makeController(std::string name, std::int64_t vendor, std::int64_t device,
                                       std::vector<USBPortMap> ports) {
    USBControllerMap controller;
    controller.name = std::move(name);
    controller.location = "14";
    controller.vendorID = vendor;
    controller.deviceID = device;
    char match[32];
    std::snprintf(match, sizeof match, "pci%04llx,%04llx", static_cast<long long>(vendor),
                  static_cast<long long>(device));
    controller.ioNameMatch = match;
    controller.providerClass = "AppleUSBXHCIPCI";
    controller.ports = std::move(ports);
    return controller;
}

// A model over a manual scheduler, a temporary home with a Desktop, the real
// tool stand-ins and scans the test lines up.
class CollectorFixture : public testing::Test {
  protected:
    void SetUp() override {
        std::filesystem::create_directories(desktop());
        auto source = std::make_unique<ManualHotplugSource>();
        hotplug = source.get();
        CollectorEnvironment environment{.scheduler = scheduler,
                                         .desktop = recordingDesktop,
                                         .scanRegistry = [this] { return nextScan(); },
                                         .names = names,
                                         .tools = buildTreeToolPaths(),
                                         .desktopURL = [this] { return desktopFolder; }};
        environment.now = [] {
            std::tm local{};
            local.tm_year = 126;
            local.tm_mon = 10;
            local.tm_mday = 22;
            local.tm_hour = 14;
            local.tm_min = 3;
            local.tm_sec = 9;
            local.tm_isdst = -1;
            return std::chrono::system_clock::from_time_t(std::mktime(&local));
        };
        environment.hotplugSource = std::move(source);
        environment.idsLocations = locations;
        environment.idsSources = {"https://pci.example/v2.2/pci.ids", "https://usb.example/usb.ids",
                                  [this](const std::string& address) { return fetch(address); }};
        customise(environment);
        model = CollectorModel::create(std::move(environment));
    }

    virtual void customise(CollectorEnvironment&) {}

    USBScanResult nextScan() {
        ++scanCount;
        if (scans.empty()) {
            return lastScan;
        }
        lastScan = scans.front();
        scans.pop_front();
        return lastScan;
    }

    std::filesystem::path desktop() const { return desktopFolder; }

    // The log without its time stamps; a message's further lines stay whole.
    std::vector<std::string> logLines() const {
        std::vector<std::string> lines;
        std::istringstream text(model->logText());
        std::string line;
        while (std::getline(text, line)) {
            const auto stamp = line.starts_with("[") ? line.find("] ") : std::string::npos;
            lines.push_back(stamp == std::string::npos ? line : line.substr(stamp + 2));
        }
        return lines;
    }

    TempFolder home;
    std::filesystem::path desktopFolder = home.path() / "Desktop";
    IDsDatabaseLocations locations{home.path() / "support", home.path() / "resources"};
    IDsNameResolver names{locations};
    ManualScheduler scheduler;
    RecordingDesktop recordingDesktop;
    ManualHotplugSource* hotplug = nullptr;
    std::deque<USBScanResult> scans;
    USBScanResult lastScan;
    int scanCount = 0;
    std::function<HTTPResponse(const std::string&)> fetch = [](const std::string&) -> HTTPResponse {
        throw std::runtime_error("Could not resolve host");
    };
    std::shared_ptr<CollectorModel> model;
};

} // namespace korvane
