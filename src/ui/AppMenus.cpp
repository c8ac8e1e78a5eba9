#include "ui/AppMenus.h"

#include "package/PackageConstants.h"

#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QDesktopServices>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QPushButton>
#include <QTimer>

namespace korvane {

namespace {

constexpr const char* aboutTitle = "About KorvaneGenerator";
constexpr const char* helpTitle = "KorvaneGenerator Help";
constexpr const char* helpText = "KorvaneGenerator generates Korvane.kext from live IOKit USB controller "
                                 "data and packages it on the Desktop. It "
                                 "does not extract ACPI, does not collect general dumps, does not install or "
                                 "load any kext, and does not require "
                                 "a saved .ioreg file.";

QString infoText(const QVariantMap& info, const char* key, const char* fallback) {
    const QVariant value = info.value(key);
    // Only a text counts: a number stored under the key is as good as none.
    if (value.typeId() != QMetaType::QString) {
        return fallback;
    }
    return value.toString();
}

QString fromView(std::string_view text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

QString contactAddress() {
    return QString(KORVANE_CONTACT_ADDRESS);
}

QWidget* activeWindow() {
    return QApplication::activeWindow();
}

} // namespace

QString AppMenus::aboutText(const QVariantMap& info) {
    const QString version = infoText(info, "CFBundleShortVersionString", "1.0");
    const QString build = infoText(info, "CFBundleVersion", "1");
    // The contact line only where the build names a real address.
    const QString contact = contactAddress().isEmpty() ? QString() : "\n" + contactAddress();
    return QString("KorvaneGenerator v%1 (%2)\n\n%3%4\n\n"
                   "Creates a standalone Korvane.kext package from live IOKit USB controller data. The app "
                   "only generates files on the Desktop and does not install or load kexts.")
        .arg(version, build, fromView(makerLine), contact);
}

std::unique_ptr<QMessageBox> AppMenus::makeAboutBox(const QVariantMap& info, const QIcon& icon) {
    auto box = std::make_unique<QMessageBox>(activeWindow());
    box->setIcon(QMessageBox::Information);
    if (!icon.isNull()) {
        box->setIconPixmap(icon.pixmap(QSize(64, 64)));
    }
    box->setWindowTitle(aboutTitle);
    box->setText(aboutTitle);
    box->setInformativeText(aboutText(info));
    // One role for both, so every platform's button order keeps them as
    // written: "Email", then "OK".
    if (!contactAddress().isEmpty()) {
        box->addButton("&Email", QMessageBox::AcceptRole);
    }
    QPushButton* ok = box->addButton("&OK", QMessageBox::AcceptRole);
    box->setDefaultButton(ok);
    box->setEscapeButton(ok);
    return box;
}

std::unique_ptr<QMessageBox> AppMenus::makeHelpBox() {
    auto box = std::make_unique<QMessageBox>(activeWindow());
    box->setIcon(QMessageBox::Information);
    box->setWindowTitle(helpTitle);
    box->setText(helpTitle);
    box->setInformativeText(helpText);
    box->addButton("&OK", QMessageBox::AcceptRole);
    return box;
}

void AppMenus::answerAbout(const QMessageBox& box, const std::function<void(const QUrl&)>& open) {
    const QAbstractButton* clicked = box.clickedButton();
    if (!clicked || clicked->text() != "&Email" || contactAddress().isEmpty()) {
        return;
    }
    const QUrl address("mailto:" + contactAddress(), QUrl::StrictMode);
    if (address.isValid()) {
        open(address);
    }
}

void AppMenus::showAbout() {
    QTimer::singleShot(0, qApp, [] {
        auto box = makeAboutBox(applicationInfo(), QApplication::windowIcon());
        box->exec();
        answerAbout(*box, [](const QUrl& address) { QDesktopServices::openUrl(address); });
    });
}

void AppMenus::showHelp() {
    QTimer::singleShot(0, qApp, [] { makeHelpBox()->exec(); });
}

QMenu& AppMenus::install(QMainWindow& window) {
    QMenuBar* bar = window.menuBar();
    QMenu* file = bar->addMenu("&File");

    // A native menu bar (macOS) has its own Quit in the application menu.
    if (!bar->isNativeMenuBar()) {
        // Closing, not quitting outright: the window may still ask about
        // unsaved work.
        QAction* quit = file->addAction("&Quit", &window, &QMainWindow::close);
        quit->setShortcut(QKeySequence::Quit);
    }

    QMenu* help = bar->addMenu("&Help");
    QAction* helpEntry = help->addAction(helpTitle, [] { showHelp(); });
    // F1 first: the menu shows the first, and F1 is the one every desktop
    // but macOS knows.
    helpEntry->setShortcuts({QKeySequence(Qt::Key_F1), QKeySequence("Ctrl+Shift+?")});
    helpEntry->setMenuRole(QAction::NoRole);
    help->addSeparator();
    QAction* about = help->addAction(aboutTitle, [] { showAbout(); });
    about->setMenuRole(QAction::AboutRole);
    return *file;
}

QAction* AppMenus::addMapByPlugging(QMenu& fileMenu, std::function<void()> start) {
    // Above Quit, which stays last where the menu has one.
    QAction* before = fileMenu.actions().isEmpty() ? nullptr : fileMenu.actions().constLast();
    auto* entry = new QAction("Map by &Plugging", &fileMenu);
    QObject::connect(entry, &QAction::triggered, &fileMenu, [start = std::move(start)] { start(); });
    fileMenu.insertAction(before, entry);
    if (before) {
        fileMenu.insertSeparator(before);
    }
    return entry;
}

QVariantMap AppMenus::applicationInfo() {
    return {{"CFBundleShortVersionString", QString(KORVANE_VERSION)},
            {"CFBundleVersion", QString(KORVANE_BUILD)}};
}

} // namespace korvane
