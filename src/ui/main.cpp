#include "ui/AnimatedHeaderIcon.h"
#include "ui/KorvaneGeneratorApp.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QPalette>
#include <QStyleFactory>
#include <cstdio>
#include <stdexcept>

namespace {

// The desktop's own palette where it has one; this one for --dark, where a
// plain X server or a desktop without a Qt theme would give a light one.
QPalette darkPalette() {
    QPalette palette;
    palette.setColor(QPalette::Window, QColor(0x26, 0x27, 0x2b));
    palette.setColor(QPalette::WindowText, QColor(0xe8, 0xe8, 0xea));
    palette.setColor(QPalette::Base, QColor(0x1c, 0x1d, 0x20));
    palette.setColor(QPalette::AlternateBase, QColor(0x2c, 0x2d, 0x31));
    palette.setColor(QPalette::Text, QColor(0xe8, 0xe8, 0xea));
    palette.setColor(QPalette::Button, QColor(0x3a, 0x3b, 0x40));
    palette.setColor(QPalette::ButtonText, QColor(0xf0, 0xf0, 0xf2));
    palette.setColor(QPalette::Highlight, QColor(0x2f, 0x6f, 0xe4));
    palette.setColor(QPalette::HighlightedText, Qt::white);
    palette.setColor(QPalette::ToolTipBase, QColor(0x2c, 0x2d, 0x31));
    palette.setColor(QPalette::ToolTipText, QColor(0xe8, 0xe8, 0xea));
    palette.setColor(QPalette::PlaceholderText, QColor(0x8e, 0x8e, 0x93));
    for (auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText}) {
        palette.setColor(QPalette::Disabled, role, QColor(0x7a, 0x7a, 0x80));
    }
    palette.setColor(QPalette::Disabled, QPalette::Button, QColor(0x30, 0x31, 0x35));
    return palette;
}

} // namespace

int main(int argc, char** argv) {
    QApplication application(argc, argv);
    QApplication::setApplicationName("KorvaneGenerator");
    QApplication::setApplicationVersion(KORVANE_VERSION);
    QApplication::setDesktopFileName(korvane::applicationID);

    QCommandLineParser parser;
    parser.setApplicationDescription(
        "Maps this machine's USB ports and writes Korvane.kext as Korvane.zip on the "
        "Desktop.");
    parser.addHelpOption();
    parser.addVersionOption();
    const QCommandLineOption registry("registry",
                                      "Show this saved registry (an ioreg -a snapshot or an ioreg -l text "
                                      "dump) instead of the live one.",
                                      "FILE");
    const QCommandLineOption map("map", "Open this map file once the first scan is in.", "FILE");
    QCommandLineOption screenshot("screenshot",
                                  "Save a picture of the window after the first scan, then quit.", "PNG");
    screenshot.setFlags(QCommandLineOption::HiddenFromHelp);
    const QCommandLineOption dark("dark", "Use a dark palette.");
    parser.addOptions({registry, map, screenshot, dark});
    parser.process(application);

    korvane::AppOptions options;
    if (parser.isSet(registry)) {
        options.registryFile = parser.value(registry).toStdString();
    }
    if (parser.isSet(map)) {
        options.mapFile = parser.value(map).toStdString();
    }
    if (parser.isSet(screenshot)) {
        options.screenshotFile = parser.value(screenshot).toStdString();
    }
    if (parser.isSet(dark)) {
        QApplication::setStyle(QStyleFactory::create("Fusion"));
        QApplication::setPalette(darkPalette());
    }

    try {
        korvane::KorvaneGeneratorApp app(options);
        return app.run();
    } catch (const std::runtime_error& error) {
        std::fprintf(stderr, "korvane-generator: %s\n", error.what());
        return 2;
    }
}
