#include "platform/PlatformFolders.h"
#include "platform/ToolPaths.h"

#include <CLI/CLI.hpp>

#include <cstdio>

int main(int argc, char** argv) {
    CLI::App app{"KorvaneGenerator: maps a machine's USB ports into a Korvane.kext package"};
    app.set_version_flag("--version", std::string(KORVANE_VERSION));
    app.require_subcommand(1);

    auto* paths = app.add_subcommand("paths", "Show where the program finds its tools and folders");
    paths->callback([] {
        const auto tools = korvane::ToolPaths::forPlatform();
        std::printf("desktop:             %s\n", korvane::desktopURL().c_str());
        std::printf("application support: %s\n", korvane::applicationSupportDirectory().c_str());
        std::printf("resources:           %s\n", korvane::resourceDirectory().c_str());
        std::printf("ditto:               %s\n", tools.ditto.c_str());
        std::printf("plutil:              %s\n", tools.plutil.c_str());
        std::printf("sysctl:              %s\n", tools.sysctl.c_str());
    });

    CLI11_PARSE(app, argc, argv);
    return 0;
}
