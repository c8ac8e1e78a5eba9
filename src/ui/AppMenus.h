#pragma once

#include <QIcon>
#include <QString>
#include <QUrl>
#include <QVariantMap>
#include <functional>
#include <memory>

class QAction;
class QMainWindow;
class QMenu;
class QMessageBox;

namespace korvane {

// The application's two menu entries of its own, "About KorvaneGenerator" and
// "KorvaneGenerator Help", and the alert boxes behind them.
class AppMenus {
  public:
    AppMenus() = delete;

    // Each queues its alert on the main event loop and returns at once.
    static void showAbout();
    static void showHelp();

    // Puts the two entries into the window's menu bar: About in the Help menu
    // (Qt moves it into the application menu on macOS) and Help with F1
    // (shown) and Ctrl+Shift+? (Command-Shift-? on macOS). Returns the File menu
    // it makes first, which on a menu bar of the window's own ends with Quit.
    static QMenu& install(QMainWindow& window);
    // "Map by Plugging" in `fileMenu`, calling `start`.
    static QAction* addMapByPlugging(QMenu& fileMenu, std::function<void()> start);

    // The pieces of the boxes, apart so they can be checked without running
    // a modal loop. `info` holds the bundle's keys CFBundleShortVersionString
    // and CFBundleVersion; anything but a text counts as missing.
    static QString aboutText(const QVariantMap& info);
    static std::unique_ptr<QMessageBox> makeAboutBox(const QVariantMap& info, const QIcon& icon);
    static std::unique_ptr<QMessageBox> makeHelpBox();
    // What the About box does with the button that closed it: "Email" opens a
    // mail to the maker, "OK" nothing. The box has "Email" and the contact
    // line only where the build names a contact address.
    static void answerAbout(const QMessageBox& box, const std::function<void(const QUrl&)>& open);

    // The running program's version keys, from the build.
    static QVariantMap applicationInfo();
};

} // namespace korvane
