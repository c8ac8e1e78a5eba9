#include "ids/IDsDatabaseManager.h"

#include "records/FileIO.h"
#include "support/TempFolder.h"

#include <gtest/gtest.h>

namespace korvane {
namespace {

namespace fs = std::filesystem;

TEST(IDsDatabaseManager, TheToolsFolderIsMadeOrItsFailureThrown) {
    // A file where a folder of the path must be; none in the first row.
    for (const char* blocker :
         {"", "support", "support/KorvaneGenerator", "support/KorvaneGenerator/Tools"}) {
        TempFolder home;
        const IDsDatabaseLocations locations{home.path() / "support", home.path() / "resources"};
        fs::create_directories(home.path() / "resources" / "Tools");
        writeFileAtomically(home.path() / "resources" / "Tools" / "usb.ids", "1b21  Alpha\n");
        if (*blocker) {
            fs::create_directories((home.path() / blocker).parent_path());
            writeFileAtomically(home.path() / blocker, "a file where a folder goes");
            EXPECT_THROW(IDsDatabaseManager::applicationSupportToolsDirectory(locations),
                         fs::filesystem_error)
                << blocker;
            // Which copy wins is the name resolver's to show; here, only that a
            // user's folder that can't be made leaves the application's copy in use.
            EXPECT_EQ(IDsDatabaseManager::localDatabaseURL("usb.ids", locations),
                      home.path() / "resources" / "Tools" / "usb.ids");
        } else {
            const auto tools = home.path() / "support" / "KorvaneGenerator" / "Tools";
            EXPECT_EQ(IDsDatabaseManager::applicationSupportToolsDirectory(locations), tools);
            EXPECT_TRUE(fs::is_directory(tools));
            EXPECT_THROW(
                IDsDatabaseManager::applicationSupportToolsDirectory({{}, locations.resourceDirectory}),
                fs::filesystem_error)
                << "an empty support folder must not mean the working folder";
        }
    }
}

} // namespace
} // namespace korvane
