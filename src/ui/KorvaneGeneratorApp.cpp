#include "ui/KorvaneGeneratorApp.h"

#include "app/CollectorAssembly.h"
#include "app/UserSettings.h"
#include "records/CollectorError.h"
#include "ui/AnimatedHeaderIcon.h"
#include "ui/AppMenus.h"
#include "ui/ContentView.h"
#include "ui/MapFileActions.h"
#include "ui/SystemDesktopServices.h"

#include <QApplication>
#include <QMainWindow>
#include <QMenuBar>
#include <QPushButton>
#include <QScreen>
#include <QTimer>
#include <algorithm>

namespace korvane {

namespace {

#ifdef Q_OS_MACOS
constexpr bool isMacOS = true;
#else
constexpr bool isMacOS = false;
#endif

} // namespace

KorvaneGeneratorApp::KorvaneGeneratorApp(const AppOptions& options)
    : desktop_(makeSystemDesktopServices()), window_(std::make_unique<QMainWindow>()),
      screenshotFile_(options.screenshotFile), mapFile_(options.mapFile),
      settingsFile_(options.settingsFile.value_or(userSettingsFile())),
      machine_(userSettingsMachine(options.registryFile)) {
    const QIcon icon = appIcon(applicationPaths().resources);
    QApplication::setWindowIcon(icon);

    const RegistryChoice choice{.registryFile = options.registryFile, .ioregFile = std::nullopt};
    content_ = new ContentView(assembleCollectorModel(choice, options.registry, scheduler_, *desktop_,
                                                      /*listenForHotplug=*/true),
                               icon);
    window_->setCentralWidget(content_);
    rememberTargetModel();
    window_->setWindowTitle("KorvaneGenerator");
    QMenu& fileMenu = AppMenus::install(*window_);
    mapFiles_ = new MapFileActions(*window_, *content_, settingsFile_);
    mapFiles_->install(fileMenu);
    QAction* plugging = AppMenus::addMapByPlugging(fileMenu, [this] { content_->startPlugging(); });
    // The entry can do what the button can: nothing for a saved registry or
    // while busy, so it is greyed out with it rather than doing nothing.
    QObject::connect(&fileMenu, &QMenu::aboutToShow, content_, [this, plugging] {
        plugging->setEnabled(content_->parts().mapByPlugging->isEnabled());
    });
    // The limits are the content's; the menu bar, where the window has one,
    // comes on top.
    content_->setMinimumSize(minimumWidth, minimumHeight);
    const int menuHeight =
        window_->menuBar()->isNativeMenuBar() ? 0 : window_->menuBar()->sizeHint().height();
    window_->resize(firstSize(window_->screen()->availableGeometry().size(), menuHeight));
    content_->setSource(
        options.registryFile
            ? WindowSource{WindowSource::Kind::savedRegistry,
                           QString::fromStdString(options.registryFile->filename().string())}
            : WindowSource{isMacOS ? WindowSource::Kind::liveMac : WindowSource::Kind::liveLinux, {}});
}

QSize KorvaneGeneratorApp::firstSize(const QSize& available, int menuHeight) {
    // The title bar and the frame aren't known before the window shows.
    constexpr int frameAllowance = 40;
    return {std::clamp(available.width(), minimumWidth, idealWidth),
            std::clamp(available.height() - frameAllowance, minimumHeight + menuHeight,
                       idealHeight + menuHeight)};
}

KorvaneGeneratorApp::~KorvaneGeneratorApp() {
    CollectorModel& model = content_->model();
    model.stopObserving(settingsObserver_);
    // A choice typed just before quitting is kept too.
    if (model.targetModelChoice() != rememberedModel_) {
        try {
            storeTargetModel(model.targetModelChoice());
        } catch (...) {
            // Nobody is left to tell; the window showed the last failure.
        }
    }
}

void KorvaneGeneratorApp::storeTargetModel(const std::string& choice) {
    updateUserSettings(settingsFile_, [this, &choice](UserSettings& settings) {
        settings.setTargetModelChoice(machine_, choice);
    });
    rememberedModel_ = choice;
}

void KorvaneGeneratorApp::rememberTargetModel() {
    CollectorModel& model = content_->model();
    // Only this machine's choice is taken; one made for another machine is
    // offered beside the field.
    const UserSettings settings = readUserSettings(settingsFile_);
    rememberedModel_ = settings.targetModelChoiceFor(machine_);
    model.setTargetModelChoice(rememberedModel_);
    if (rememberedModel_.empty()) {
        content_->offerTargetModel(QString::fromStdString(settings.targetModelOfferFor(machine_)));
    }
    // Written as it changes, a little after the last keystroke.
    auto* pending = new QTimer(window_.get());
    pending->setSingleShot(true);
    pending->setInterval(400);
    QObject::connect(pending, &QTimer::timeout, window_.get(), [this] {
        const std::string choice = content_->model().targetModelChoice();
        try {
            storeTargetModel(choice);
            content_->setSettingsProblem("");
        } catch (...) {
            content_->setSettingsProblem(
                QString::fromStdString("The target model can't be remembered for the next start: " +
                                       errorDescription(std::current_exception())));
        }
    });
    settingsObserver_ = model.observe([this, pending] {
        if (content_->model().targetModelChoice() != rememberedModel_) {
            pending->start();
        }
    });
}

int KorvaneGeneratorApp::run() {
    window_->show();
    if (mapFile_) {
        whenFirstScanned(
            [this, file = *mapFile_] { mapFiles_->openMap(QString::fromStdString(file.string())); });
    }
    if (screenshotFile_) {
        whenFirstScanned([this, file = *screenshotFile_] {
            // Give layout and painting a turn after the scan's last change.
            QTimer::singleShot(300, window_.get(), [this, file] {
                const bool saved = content_->grab().save(QString::fromStdString(file.string()));
                QApplication::exit(saved ? 0 : 1);
            });
        });
    }
    return QApplication::exec();
}

void KorvaneGeneratorApp::whenFirstScanned(std::function<void()> work) {
    auto* poll = new QTimer(window_.get());
    poll->setInterval(100);
    QObject::connect(poll, &QTimer::timeout, window_.get(), [this, poll, work = std::move(work)] {
        // The window's first appearance started the scan before this poll.
        if (content_->model().isScanningUSB()) {
            return;
        }
        poll->stop();
        poll->deleteLater();
        work();
    });
    poll->start();
}

} // namespace korvane
