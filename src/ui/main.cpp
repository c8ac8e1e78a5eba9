#include "app/RegistryChoice.h"
#include "ui/AnimatedHeaderIcon.h"
#include "ui/KorvaneGeneratorApp.h"
#include "ui/VisibleControlStyle.h"

#include <QApplication>
#include <QCommandLineParser>
#include <cstdio>
#include <stdexcept>

namespace {

// Qt's own options, which QApplication takes out of the arguments itself; the
// parser accepts them so that they aren't refused before Qt sees them.
void acceptQtOptions(QCommandLineParser& parser) {
    for (const char* name : {"platform", "platformpluginpath", "platformtheme", "plugin", "qwindowgeometry",
                             "qwindowtitle", "qwindowicon", "session", "style", "stylesheet", "display",
                             "geometry", "title", "icon", "name", "visual", "fontengine", "qmljsdebugger"}) {
        QCommandLineOption option(name, "", "value");
        option.setFlags(QCommandLineOption::HiddenFromHelp);
        parser.addOption(option);
    }
    for (const char* name : {"reverse", "widgetcount", "nograb", "dograb", "sync"}) {
        QCommandLineOption option(name);
        option.setFlags(QCommandLineOption::HiddenFromHelp);
        parser.addOption(option);
    }
}

void print(std::FILE* stream, const QString& text) {
    std::fputs(text.toLocal8Bit().constData(), stream);
}

} // namespace

int main(int argc, char** argv) {
    QApplication::setApplicationName("KorvaneGenerator");
    QApplication::setApplicationVersion(KORVANE_VERSION);
    QApplication::setDesktopFileName(korvane::applicationID);

    // The arguments are read before any display is opened: --help, --version
    // and a mistyped option need none.
    QCommandLineParser parser;
    parser.setApplicationDescription(
        "Maps this machine's USB ports and writes Korvane.kext as Korvane.zip on the Desktop. "
        "The command line program is korvane.");
    parser.setSingleDashWordOptionMode(QCommandLineParser::ParseAsLongOptions);
    // Not addHelpOption(): its --help-all needs Qt's own option list, which
    // isn't there before the display is.
    const QCommandLineOption help({"h", "help"}, "Show these options.");
    parser.addOption(help);
    const QCommandLineOption version = parser.addVersionOption();
    const QCommandLineOption registry("registry",
                                      "Show this saved registry (an ioreg -a snapshot or an ioreg -l text "
                                      "dump) instead of the live one.",
                                      "FILE");
    QCommandLineOption screenshot("screenshot",
                                  "Save a picture of the window after the first scan, then quit.", "PNG");
    screenshot.setFlags(QCommandLineOption::HiddenFromHelp);
    const QCommandLineOption dark("dark", "Use a dark palette.");
    parser.addOptions({registry, screenshot, dark});
    acceptQtOptions(parser);

    QStringList arguments;
    for (int index = 0; index < argc; ++index) {
        arguments << QString::fromLocal8Bit(argv[index]);
    }
    if (!parser.parse(arguments)) {
        print(stderr, "korvane-generator: " + parser.errorText() +
                          "\nRun korvane-generator --help for the options.\n");
        return 2;
    }
    if (parser.isSet(help)) {
        print(stdout, parser.helpText().replace("<executable_name>", "korvane-generator"));
        return 0;
    }
    if (parser.isSet(version)) {
        print(stdout, QString("korvane-generator %1\n").arg(KORVANE_VERSION));
        return 0;
    }
    if (!parser.positionalArguments().isEmpty()) {
        print(stderr, "korvane-generator: unexpected argument '" + parser.positionalArguments().first() +
                          "'; the window takes options only (the command line program is korvane).\n");
        return 2;
    }

    korvane::AppOptions options;
    try {
        if (parser.isSet(registry)) {
            options.registryFile = parser.value(registry).toStdString();
        }
        // A file that can't serve is told before the window opens.
        options.registry = korvane::openRegistry({.registryFile = options.registryFile, .ioregFile = {}});
    } catch (const std::runtime_error& error) {
        std::fprintf(stderr, "korvane-generator: %s\n", error.what());
        return 2;
    }
    if (parser.isSet(screenshot)) {
        options.screenshotFile = parser.value(screenshot).toStdString();
    }

    QApplication application(argc, argv);
    korvane::VisibleControlStyle::install(parser.isSet(dark));
    korvane::KorvaneGeneratorApp app(options);
    return app.run();
}
