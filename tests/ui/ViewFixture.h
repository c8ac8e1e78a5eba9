#pragma once

#include "collector/CollectorModel.h"
#include "support/BuildTree.h"
#include "support/ManualScheduler.h"
#include "support/TempFolder.h"

#include <QApplication>
#include <QComboBox>
#include <deque>
#include <gtest/gtest.h>

namespace korvane {

struct RecordingDesktop final : DesktopServices {
    std::vector<std::string> sounds;
    std::vector<std::filesystem::path> revealed;
    std::vector<std::string> opened;
    void playSound(const std::string& name) override { sounds.push_back(name); }
    void revealInFileManager(const std::filesystem::path& file) override { revealed.push_back(file); }
    void openURL(const std::string& address) override { opened.push_back(address); }
};

inline USBPortMap makePort(const std::string& name, std::uint32_t number, std::string device = "",
                           std::int64_t connector = 3) {
    USBPortMap port;
    port.name = name;
    port.location = "14" + std::to_string(number) + "00000";
    port.connector = connector;
    port.portData = portData(number);
    port.activeDevice = std::move(device);
    return port;
}

// `count` ports HS01.., the first `active` of them with a device.
inline std::vector<USBPortMap> makePorts(int count, int active = 0) {
    std::vector<USBPortMap> ports;
    for (int i = 1; i <= count; ++i) {
        char name[16];
        std::snprintf(name, sizeof name, "HS%02d", i);
        ports.push_back(
            makePort(name, static_cast<std::uint32_t>(i), i <= active ? "Device " + std::to_string(i) : ""));
    }
    return ports;
}

inline USBControllerMap makeController(std::string name, std::int64_t vendor, std::int64_t device,
                                       std::vector<USBPortMap> ports, std::string databaseName = "") {
    USBControllerMap controller;
    controller.name = std::move(name);
    controller.location = "14";
    controller.vendorID = vendor;
    controller.deviceID = device;
    controller.ioNameMatch = "pci-match";
    controller.usbDeviceName = std::move(databaseName);
    controller.ports = std::move(ports);
    return controller;
}

// A model over the manual scheduler whose scans return what the test lines up
// (the last one again once the queue is empty). Skips when there is no Qt
// platform to make widgets on.
class ViewFixture : public testing::Test {
  public:
    void SetUp() override {
        if (!qApp) {
            GTEST_SKIP() << "no Qt platform: run under ctest, which sets QT_QPA_PLATFORM=offscreen";
        }
        std::filesystem::create_directories(home.path() / "Desktop");
        CollectorEnvironment environment{.scheduler = scheduler,
                                         .desktop = desktop,
                                         .scanRegistry = [this] { return nextScan(); },
                                         .names = names,
                                         .tools = buildTreeToolPaths(),
                                         .desktopURL = [this] { return home.path() / "Desktop"; }};
        environment.idsLocations = {home.path() / "support", home.path() / "resources"};
        // An update that never reaches a network: the test decides when it ends.
        environment.idsSources = {
            "https://pci.example/pci.ids", "https://usb.example/usb.ids",
            [](const std::string&) -> HTTPResponse { throw std::runtime_error("offline"); }};
        model = CollectorModel::create(std::move(environment));
    }

    USBScanResult nextScan() {
        if (!scans.empty()) {
            last = scans.front();
            scans.pop_front();
        }
        return last;
    }

    // Lines up one scan result and runs a Reset Ports scan to its end.
    void scanShowing(std::vector<USBControllerMap> controllers) {
        scans.push_back({std::move(controllers)});
        model->scanUSBPorts();
        scheduler.runUntilIdle();
        QApplication::processEvents();
    }

    // What a user's pick in a connector menu does.
    static void pick(QComboBox& menu, const QString& label) {
        const int index = menu.findText(label);
        ASSERT_GE(index, 0) << label.toStdString();
        menu.setCurrentIndex(index);
        emit menu.activated(index);
    }

    TempFolder home;
    ManualScheduler scheduler;
    RecordingDesktop desktop;
    IDsNameResolver names{{home.path() / "support", home.path() / "resources"}};
    std::deque<USBScanResult> scans;
    USBScanResult last;
    std::shared_ptr<CollectorModel> model;
};

} // namespace korvane
