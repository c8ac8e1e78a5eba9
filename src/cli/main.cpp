#include "platform/PlatformFolders.h"
#include "platform/ToolPaths.h"

#include <CLI/CLI.hpp>

#include <cstdio>
#include <filesystem>

int main(int argc, char** argv) {
    CLI::App app{"KorvaneGenerator: maps a machine's USB ports into a Korvane.kext package"};
    app.set_version_flag("--version", std::string(KORVANE_VERSION));
    app.require_subcommand(1);

    auto* paths = app.add_subcommand("paths", "Show where the program finds its tools and folders");
    paths->callback([] {
        const auto tools = korvane::ToolPaths::forPlatform();
        auto show = [](const char* label, const std::filesystem::path& path) {
            std::error_code error;
            std::printf("%-20s %s%s\n", label, path.c_str(), std::filesystem::exists(path, error) ? "" : " (missing)");
        };
        show("desktop:", korvane::desktopURL());
        show("application support:", korvane::applicationSupportDirectory());
        show("resources:", korvane::resourceDirectory());
        show("ditto:", tools.ditto);
        show("plutil:", tools.plutil);
        show("sysctl:", tools.sysctl);
    });

    CLI11_PARSE(app, argc, argv);
    return 0;
}
