#include "ui/KorvaneGeneratorApp.h"

#include "collector/CollectorModel.h"
#include "dumpscan/USBTreeScanner.h"
#include "platform/LiveSources.h"
#include "platform/PlatformFolders.h"
#include "platform/ToolPaths.h"
#include "savedregistry/SavedRegistry.h"
#include "ui/AnimatedHeaderIcon.h"
#include "ui/AppMenus.h"
#include "ui/ContentView.h"
#include "ui/SystemDesktopServices.h"

#include <QApplication>
#include <QMainWindow>
#include <QMenuBar>
#include <QTimer>

#include <stdexcept>

namespace korvane {

namespace {

std::unique_ptr<RegistrySource> openRegistry(const std::optional<std::filesystem::path>& file) {
    if (!file) {
        return makeLiveRegistrySource();
    }
    if (!std::filesystem::is_regular_file(*file)) {
        throw std::runtime_error(file->string() + ": no such file");
    }
    auto registry = openSavedRegistry(*file);
    if (!registry) {
        throw std::runtime_error(file->string() +
                                 ": not a saved registry (an ioreg -a snapshot or an ioreg -l text dump)");
    }
    return registry;
}

} // namespace

KorvaneGeneratorApp::KorvaneGeneratorApp(const AppOptions& options)
    : desktop_(makeSystemDesktopServices()), registry_(openRegistry(options.registryFile)),
      window_(std::make_unique<QMainWindow>()), screenshotFile_(options.screenshotFile) {
    const QIcon icon = appIcon(resourceDirectory());
    QApplication::setWindowIcon(icon);

    IDsNameResolver& names = IDsNameResolver::shared();
    CollectorEnvironment environment{
        .scheduler = scheduler_,
        .desktop = *desktop_,
        .scanRegistry = [this, &names] { return USBTreeScanner{std::nullopt, *registry_, names}.scan(); },
        .names = names,
        .tools = ToolPaths::forPlatform(),
        .desktopURL = [] { return desktopURL(); },
    };
    // A saved machine doesn't change; events of this one would only rescan it.
    if (!options.registryFile) {
        environment.hotplugSource = makeHotplugSource(scheduler_);
    }
    environment.idsSources = IDsDownloadSources::standard();
    environment.idsLocations = names.locations();

    content_ = new ContentView(CollectorModel::create(std::move(environment)), icon);
    window_->setCentralWidget(content_);
    window_->setWindowTitle("KorvaneGenerator");
    AppMenus::install(*window_);
    // The limits are the content's; the menu bar, where the window has one,
    // comes on top.
    content_->setMinimumSize(minimumWidth, minimumHeight);
    const int menuHeight = window_->menuBar()->isNativeMenuBar() ? 0 : window_->menuBar()->sizeHint().height();
    window_->resize(idealWidth, idealHeight + menuHeight);
}

KorvaneGeneratorApp::~KorvaneGeneratorApp() = default;

int KorvaneGeneratorApp::run() {
    window_->show();
    if (screenshotFile_) {
        saveScreenshotWhenScanned(*screenshotFile_);
    }
    return QApplication::exec();
}

void KorvaneGeneratorApp::saveScreenshotWhenScanned(const std::filesystem::path& file) {
    auto* poll = new QTimer(window_.get());
    poll->setInterval(100);
    QObject::connect(poll, &QTimer::timeout, window_.get(), [this, poll, file] {
        const CollectorModel& model = content_->model();
        if (model.isScanningUSB() || model.scannedControllers().empty()) {
            return;
        }
        poll->stop();
        // Give layout and painting a turn after the scan's last change.
        QTimer::singleShot(300, window_.get(), [this, file] {
            const bool saved = content_->grab().save(QString::fromStdString(file.string()));
            QApplication::exit(saved ? 0 : 1);
        });
    });
    poll->start();
}

} // namespace korvane
