#include "ui/KorvaneGeneratorApp.h"

#include "app/CollectorAssembly.h"
#include "ui/AnimatedHeaderIcon.h"
#include "ui/AppMenus.h"
#include "ui/ContentView.h"
#include "ui/MapFileActions.h"
#include "ui/SystemDesktopServices.h"

#include <QApplication>
#include <QMainWindow>
#include <QMenuBar>
#include <QSettings>
#include <QTimer>

namespace korvane {

KorvaneGeneratorApp::KorvaneGeneratorApp(const AppOptions& options)
    : desktop_(makeSystemDesktopServices()),
      settings_(std::make_unique<QSettings>(QSettings::IniFormat, QSettings::UserScope, "KorvaneGenerator",
                                            "KorvaneGenerator")),
      window_(std::make_unique<QMainWindow>()), screenshotFile_(options.screenshotFile),
      mapFile_(options.mapFile) {
    const QIcon icon = appIcon(applicationPaths().resources);
    QApplication::setWindowIcon(icon);

    const RegistryChoice choice{.registryFile = options.registryFile, .ioregFile = std::nullopt};
    content_ = new ContentView(assembleCollectorModel(choice, openRegistry(choice), scheduler_, *desktop_,
                                                      /*listenForHotplug=*/true),
                               icon);
    window_->setCentralWidget(content_);
    window_->setWindowTitle("KorvaneGenerator");
    QMenu& fileMenu = AppMenus::install(*window_);
    mapFiles_ = new MapFileActions(*window_, *content_, *settings_);
    mapFiles_->install(fileMenu);
    // The limits are the content's; the menu bar, where the window has one,
    // comes on top.
    content_->setMinimumSize(minimumWidth, minimumHeight);
    const int menuHeight =
        window_->menuBar()->isNativeMenuBar() ? 0 : window_->menuBar()->sizeHint().height();
    window_->resize(idealWidth, idealHeight + menuHeight);
}

KorvaneGeneratorApp::~KorvaneGeneratorApp() = default;

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
