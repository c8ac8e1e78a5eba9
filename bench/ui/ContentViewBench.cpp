// How fast the window shows a realistic port list and applies a rescan to it.
//
//   BM_StartToFirstPaint: from starting a new process to the first paint of a
//     window holding 4 controllers with 100 ports (the process is this program
//     again, with the real event loop, scheduler threads and first-appearance
//     scan).
//   BM_Rescan*: from a silent refresh's scan result to the updated, painted
//     list.
//
// Runs on the offscreen platform unless QT_QPA_PLATFORM says otherwise.

#include "collector/CollectorModel.h"
#include "support/BuildTree.h"
#include "support/ManualScheduler.h"
#include "support/TempFolder.h"
#include "ui/ContentView.h"
#include "ui/ControllerList.h"
#include "ui/QtScheduler.h"

#include <QApplication>
#include <QMainWindow>
#include <QScrollArea>
#include <QTimer>
#include <benchmark/benchmark.h>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <spawn.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

extern char** environ;

namespace korvane {
namespace {

constexpr const char* childFlag = "--first-paint-child";

struct QuietDesktop final : DesktopServices {
    void playSound(const std::string&) override {}
    bool revealInFileManager(const std::filesystem::path&) override { return true; }
    void openURL(const std::string&) override {}
};

// 4 controllers of 25 ports, 22 of them in companion pairs, every fifth port
// with a device; `generation` moves the devices along so successive scans differ.
USBScanResult portList(int generation = 0) {
    USBScanResult result;
    for (int c = 0; c < 4; ++c) {
        USBControllerMap controller;
        controller.name = "XHC" + std::to_string(c + 1);
        controller.location = std::to_string(14 + c);
        controller.vendorID = 0x8086;
        controller.deviceID = 0xa36d + c;
        controller.usbDeviceName = "Intel Corporation USB 3.1 xHCI Host Controller";
        for (int p = 1; p <= 25; ++p) {
            USBPortMap port;
            port.name = (p <= 14 ? "HS" : "SS") + std::to_string(100 + p).substr(1);
            port.location = controller.location + std::to_string(p);
            port.connector = p % 3 == 0 ? 9 : 3;
            port.portData = portData(static_cast<std::uint32_t>(p));
            if ((p + generation) % 5 == 0) {
                port.activeDevice = "USB Device " + std::to_string(p);
            }
            controller.ports.push_back(std::move(port));
        }
        // HS01-HS11 pair with SS15-SS25, both ways, as a machine's USB 3 connectors do.
        for (int p = 0; p < 11; ++p) {
            USBPortMap& usb2 = controller.ports[static_cast<std::size_t>(p)];
            USBPortMap& superSpeed = controller.ports[static_cast<std::size_t>(p + 14)];
            usb2.companionKey = usbPortStableID(controller, superSpeed);
            superSpeed.companionKey = usbPortStableID(controller, usb2);
        }
        result.controllers.push_back(std::move(controller));
    }
    return result;
}

std::int64_t monotonicNanoseconds() {
    return std::chrono::duration_cast<std::chrono::nanoseconds>(
               std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

CollectorEnvironment environmentFor(Scheduler& scheduler, DesktopServices& desktop, IDsNameResolver& names,
                                    const TempFolder& home, std::function<USBScanResult()> scan) {
    CollectorEnvironment environment{.scheduler = scheduler,
                                     .desktop = desktop,
                                     .scanRegistry = std::move(scan),
                                     .names = names,
                                     .tools = buildTreeToolPaths(),
                                     .desktopURL = [&home] { return home.path(); }};
    environment.idsLocations = names.locations();
    return environment;
}

// Tells the time of the first paint of the list once it holds the scan.
class FirstPaintWatch : public QObject {
  public:
    FirstPaintWatch(const CollectorModel& model, QWidget& viewport) : model_(model) {
        viewport.installEventFilter(this);
    }

  protected:
    bool eventFilter(QObject*, QEvent* event) override {
        if (event->type() == QEvent::Paint && !model_.scannedControllers().empty() && !isDone_) {
            isDone_ = true;
            std::printf("%lld\n", static_cast<long long>(monotonicNanoseconds()));
            std::fflush(stdout);
            QTimer::singleShot(0, qApp, &QApplication::quit);
        }
        return false;
    }

  private:
    const CollectorModel& model_;
    bool isDone_ = false;
};

int firstPaintChild(int argc, char** argv) {
    QApplication application(argc, argv);
    TempFolder home;
    QtScheduler scheduler;
    QuietDesktop desktop;
    IDsNameResolver names{{home.path(), home.path()}};
    QMainWindow window;
    auto* view = new ContentView(
        CollectorModel::create(environmentFor(scheduler, desktop, names, home, [] { return portList(); })),
        QIcon());
    window.setCentralWidget(view);
    window.resize(900, 680);
    FirstPaintWatch watch(view->model(), *view->parts().list->viewport());
    window.show();
    return QApplication::exec();
}

void BM_StartToFirstPaint(benchmark::State& state, std::string program) {
    for (auto _ : state) {
        int output[2];
        if (pipe(output) != 0) {
            state.SkipWithError("pipe failed");
            return;
        }
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_adddup2(&actions, output[1], STDOUT_FILENO);
        posix_spawn_file_actions_addclose(&actions, output[0]);
        // The platform plugin's notices would break up the table.
        posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
        std::vector<char*> arguments{program.data(), const_cast<char*>(childFlag), nullptr};
        pid_t child = 0;
        const std::int64_t start = monotonicNanoseconds();
        const int spawned =
            posix_spawn(&child, program.c_str(), &actions, nullptr, arguments.data(), environ);
        posix_spawn_file_actions_destroy(&actions);
        close(output[1]);
        std::string text;
        char buffer[64];
        for (ssize_t n; (n = read(output[0], buffer, sizeof buffer)) > 0;) {
            text.append(buffer, static_cast<std::size_t>(n));
        }
        close(output[0]);
        int status = 0;
        if (spawned == 0) {
            waitpid(child, &status, 0);
        }
        if (spawned != 0 || text.empty() || !WIFEXITED(status) || WEXITSTATUS(status) != 0) {
            state.SkipWithError("the window process failed");
            return;
        }
        state.SetIterationTime(static_cast<double>(std::stoll(text) - start) / 1e9);
    }
}

// One window over the manual scheduler, shown, with the list of the first
// scan; each iteration applies a silent refresh.
class RescanFixture {
  public:
    RescanFixture() {
        auto environment = environmentFor(scheduler_, desktop_, names_, home_, [this] { return next_; });
        view_ = std::make_unique<ContentView>(CollectorModel::create(std::move(environment)), QIcon());
        view_->resize(900, 680);
        next_ = portList();
        view_->show();
        scheduler_.runUntilIdle();
        QApplication::processEvents();
    }

    void rescan(USBScanResult result) {
        next_ = std::move(result);
        view_->model().refreshActiveUSBDevices();
        scheduler_.runUntilIdle();
        view_->parts().list->viewport()->repaint();
    }

  private:
    TempFolder home_;
    ManualScheduler scheduler_;
    QuietDesktop desktop_;
    IDsNameResolver names_{{home_.path(), home_.path()}};
    USBScanResult next_;
    std::unique_ptr<ContentView> view_;
};

void BM_RescanSameList(benchmark::State& state) {
    RescanFixture fixture;
    for (auto _ : state) {
        fixture.rescan(portList());
    }
}

void BM_RescanMovedDevices(benchmark::State& state) {
    RescanFixture fixture;
    const std::vector<USBScanResult> lists{portList(0), portList(1)};
    std::size_t turn = 0;
    for (auto _ : state) {
        fixture.rescan(lists[++turn % 2]);
    }
}

BENCHMARK(BM_RescanSameList)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_RescanMovedDevices)->Unit(benchmark::kMicrosecond);

} // namespace
} // namespace korvane

int main(int argc, char** argv) {
    // The offscreen platform by default, as an argument rather than a change
    // of the environment, which the child would inherit.
    std::vector<char*> arguments(argv, argv + argc);
    char platformFlag[] = "-platform";
    char offscreen[] = "offscreen";
    if (!std::getenv("QT_QPA_PLATFORM")) {
        arguments.insert(arguments.begin() + 1, {platformFlag, offscreen});
    }
    int count = static_cast<int>(arguments.size());
    arguments.push_back(nullptr);

    if (argc > 1 && std::strcmp(argv[argc - 1], korvane::childFlag) == 0) {
        return korvane::firstPaintChild(count, arguments.data());
    }

    QApplication application(count, arguments.data());
    benchmark::RegisterBenchmark("BM_StartToFirstPaint", korvane::BM_StartToFirstPaint,
                                 std::string(QCoreApplication::applicationFilePath().toStdString()))
        ->UseManualTime()
        ->Iterations(10)
        ->Unit(benchmark::kMillisecond);
    benchmark::Initialize(&count, arguments.data());
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
