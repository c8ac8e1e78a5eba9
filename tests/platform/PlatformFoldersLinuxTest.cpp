#include "base/FileIO.h"
#include "platform/PlatformFolders.h"
#include "support/TempFolder.h"

#include <gtest/gtest.h>
#include <map>

namespace korvane {
namespace {

namespace fs = std::filesystem;

Environment environmentOf(std::map<std::string, std::string> values) {
    return {[values](std::string_view name) -> std::optional<std::string> {
        auto it = values.find(std::string(name));
        return it == values.end() ? std::nullopt : std::optional(it->second);
    }};
}

TEST(PlatformFolders, TheDesktopFollowsUserDirsAsXdgUserDirsReadsIt) {
    const std::pair<const char*, const char*> rows[] = {
        {nullptr, "Desktop"},
        {"# written by "
         "xdg-user-dirs-update\nXDG_DOWNLOAD_DIR=\"$HOME/Downloads\"\nXDG_DESKTOP_DIR=\"$HOME/"
         "Schreibtisch\"\n",
         "Schreibtisch"},
        {"XDG_DESKTOP_DIR=\"/srv/desk\"\n", "/srv/desk"},
        {"XDG_DESKTOP_DIR=\"$HOME/My \\\"Desk\\\"\"\n", "My \"Desk\""},
        {"XDG_DESKTOP_DIR=\"$HOME/A\"\nXDG_DESKTOP_DIR=\"$HOME/B\"\n", "B"}, // the last entry wins
        {"XDG_DESKTOP_DIR=$HOME/Raw\n", "Desktop"},
        {"XDG_DESKTOP_DIR=\"Desk\"\n", "Desktop"},
        {"XDG_DESKTOP_DIR=\"$HOME/Open\n", "Desktop"},
    };
    // The file is read where XDG_CONFIG_HOME says; its default is pinned below.
    for (const auto& [userDirs, expected] : rows) {
        TempFolder home;
        const fs::path config = home.path() / "cfg";
        if (userDirs) {
            fs::create_directories(config);
            writeFileAtomically(config / "user-dirs.dirs", userDirs);
        }
        const fs::path desktop = expected;
        EXPECT_EQ(
            desktopURL(environmentOf({{"HOME", home.path().string()}, {"XDG_CONFIG_HOME", config.string()}})),
            desktop.is_absolute() ? desktop : home.path() / desktop)
            << (userDirs ? userDirs : "no file");
    }
}

TEST(PlatformFolders, ApplicationSupportFollowsAnAbsoluteXDGDataHome) {
    for (const auto& [dataHome, expected] : {std::pair{"", "/home/ada/.local/share"},
                                             {"/data", "/data"},
                                             {"relative", "/home/ada/.local/share"}}) {
        std::map<std::string, std::string> variables{{"HOME", "/home/ada"}};
        if (*dataHome) {
            variables["XDG_DATA_HOME"] = dataHome;
        }
        EXPECT_EQ(applicationSupportDirectory(environmentOf(variables)), fs::path(expected)) << dataHome;
    }
    EXPECT_EQ(configurationDirectory(environmentOf({{"HOME", "/home/ada"}})), fs::path("/home/ada/.config"));
    EXPECT_EQ(configurationDirectory(environmentOf({{"HOME", "/home/ada"}, {"XDG_CONFIG_HOME", "/cfg"}})),
              fs::path("/cfg"));
}

} // namespace
} // namespace korvane
