#include "ui/KorvaneGeneratorApp.h"

#include "app/CollectorAssembly.h"
#include "ui/AnimatedHeaderIcon.h"
#include "ui/AppMenus.h"
#include "ui/ContentView.h"
#include "ui/SystemDesktopServices.h"

#include <QApplication>
#include <QMainWindow>
#include <QMenuBar>
#include <QTimer>

namespace korvane {

KorvaneGeneratorApp::KorvaneGeneratorApp(const AppOptions& options)
    : desktop_(makeSystemDesktopServices()), window_(std::make_unique<QMainWindow>()),
      screenshotFile_(options.screenshotFile) {
    const QIcon icon = appIcon(applicationPaths().resources);
    QApplication::setWindowIcon(icon);

    const RegistryChoice choice{.registryFile = options.registryFile, .ioregFile = std::nullopt};
    content_ = new ContentView(assembleCollectorModel(choice, options.registry, scheduler_, *desktop_,
                                                      /*listenForHotplug=*/true),
                               icon);
    window_->setCentralWidget(content_);
    window_->setWindowTitle("KorvaneGenerator");
    AppMenus::install(*window_);
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
