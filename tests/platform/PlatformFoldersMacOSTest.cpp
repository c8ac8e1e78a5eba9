#include "platform/PlatformFolders.h"

#include <gtest/gtest.h>

namespace korvane {
namespace {

namespace fs = std::filesystem;

TEST(PlatformFolders, TheMacsFoldersAreTheHomesWhateverXDGSays) {
    const Environment environment{[](std::string_view name) -> std::optional<std::string> {
        if (name == "HOME") {
            return "/Users/ada";
        }
        return name.starts_with("XDG_") ? std::optional<std::string>("/xdg") : std::nullopt;
    }};
    EXPECT_EQ(desktopURL(environment), fs::path("/Users/ada/Desktop"));
    EXPECT_EQ(applicationSupportDirectory(environment), fs::path("/Users/ada/Library/Application Support"));
    EXPECT_EQ(configurationDirectory(environment), fs::path("/Users/ada/Library/Application Support"));
    EXPECT_EQ(lockDirectory(environment),
              fs::path("/Users/ada/Library/Caches/org.korvanegenerator.KorvaneGenerator"));
}

} // namespace
} // namespace korvane
