#pragma once

#include "collector/DesktopServices.h"
#include "scanner/RegistrySource.h"
#include "ui/QtScheduler.h"

#include <QIcon>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>

class QMainWindow;

namespace korvane {

class ContentView;
class MapFileActions;

struct AppOptions {
    // A saved registry shown instead of the live one; no hotplug events then.
    std::optional<std::filesystem::path> registryFile;
    // What the scans read, opened from the choice above (openRegistry).
    std::shared_ptr<const RegistrySource> registry;
    // Save a picture of the window once the first scan is shown, then quit.
    std::optional<std::filesystem::path> screenshotFile;
    // A map file to open once the first scan is in.
    std::optional<std::filesystem::path> mapFile;
    // Where the window remembers its settings; the user's configuration
    // folder when absent.
    std::optional<std::filesystem::path> settingsFile;
};

// The application: one window of `ContentView` with its menus, and what the
// window's model needs of the world.
class KorvaneGeneratorApp {
  public:
    explicit KorvaneGeneratorApp(const AppOptions& options);

    // The window's first size: the ideal one, or what the screen has room for.
    static QSize firstSize(const QSize& available, int menuHeight);
    ~KorvaneGeneratorApp();

    KorvaneGeneratorApp(const KorvaneGeneratorApp&) = delete;
    KorvaneGeneratorApp& operator=(const KorvaneGeneratorApp&) = delete;

    // Shows the window and runs the event loop until the application ends.
    int run();

    QMainWindow& window() const { return *window_; }
    ContentView& content() const { return *content_; }
    MapFileActions& mapFiles() const { return *mapFiles_; }

    // Small enough for a 1366x768 screen and for a 1920x1080 one at scale 2
    // (960x540 points, less the desktop's bar and the title bar).
    static constexpr int minimumWidth = 760;
    static constexpr int minimumHeight = 440;
    static constexpr int idealWidth = 900;
    static constexpr int idealHeight = 680;

  private:
    // Runs `work` once the first scan's results are in place.
    void whenFirstScanned(std::function<void()> work);
    void rememberTargetModel();
    // Writes the choice into the settings file; throws as writeUserSettings does.
    void storeTargetModel(const std::string& choice);

    // Declared before the scheduler: background work still running when the
    // window closes uses it until the scheduler's end has waited for it.
    std::unique_ptr<DesktopServices> desktop_;
    QtScheduler scheduler_;
    std::unique_ptr<QMainWindow> window_;
    ContentView* content_ = nullptr;
    MapFileActions* mapFiles_ = nullptr;
    std::optional<std::filesystem::path> screenshotFile_;
    std::optional<std::filesystem::path> mapFile_;
    std::filesystem::path settingsFile_;
    // The machine shown, as the settings remember target models by.
    std::string machine_;
    std::string rememberedModel_;
    std::size_t settingsObserver_ = 0;
};

} // namespace korvane
