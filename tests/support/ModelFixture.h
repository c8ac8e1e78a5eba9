#pragma once

#include "collector/CollectorModel.h"
#include "support/BuildTree.h"
#include "support/ManualScheduler.h"
#include "support/TempFolder.h"
#include "support/USBRecords.h"

#include <ctime>
#include <deque>
#include <gtest/gtest.h>
#include <iomanip>
#include <sstream>

namespace korvane {

// The model's world as the collector and window tests make it: a recording
// desktop, a hotplug source fired by hand, scans the test lines up, a manual
// scheduler and a temporary home.

struct RecordingDesktop final : DesktopServices {
    std::vector<std::string> sounds;
    std::vector<std::filesystem::path> revealed;
    std::vector<std::string> opened;
    void playSound(const std::string& name) override { sounds.push_back(name); }
    bool canReveal = true;
    bool revealInFileManager(const std::filesystem::path& file) override {
        revealed.push_back(file);
        return canReveal;
    }
    void openURL(const std::string& address) override { opened.push_back(address); }
};

struct ManualHotplugSource final : HotplugSource {
    std::function<void()> onChange;
    int starts = 0;
    void start(std::function<void()> handler) override {
        ++starts;
        onChange = std::move(handler);
    }
};

// A model over all of the above, with the build's tool stand-ins. Scans
// return what the test lines up in `scans`, then the last one again.
class ModelFixture : public testing::Test {
  public:
    void SetUp() override {
        std::filesystem::create_directories(desktopFolder);
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
            std::istringstream("2026-11-22 14:03:09") >> std::get_time(&local, "%Y-%m-%d %H:%M:%S");
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
        if (!scans.empty()) {
            lastScan = scans.front();
            scans.pop_front();
        }
        return lastScan;
    }

    // Lines up one scan result and runs a Reset Ports scan to its end.
    void scanShowing(std::vector<USBControllerMap> controllers) {
        scans.push_back({std::move(controllers)});
        model->scanUSBPorts();
        scheduler.runUntilIdle();
    }

    // A device arrives or leaves: the hotplug event, then the rescan after
    // the debounce, which finds `controllers`.
    void hotplugShowing(std::vector<USBControllerMap> controllers) {
        scans.push_back({std::move(controllers)});
        hotplug->onChange();
        scheduler.advance(CollectorModel::hotplugDebounce);
    }

    // The log without its time stamps; a message's further lines stay whole.
    std::vector<std::string> logLines() const {
        std::vector<std::string> lines;
        std::istringstream text(model->logText());
        for (std::string line; std::getline(text, line);) {
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
    // An update that never reaches a network unless the test says otherwise.
    std::function<HTTPResponse(const std::string&)> fetch = [](const std::string&) -> HTTPResponse {
        throw std::runtime_error("Could not resolve host");
    };
    std::shared_ptr<CollectorModel> model;
};

} // namespace korvane
