#include "ids/IDsDatabaseManager.h"

#include "base/FileIO.h"
#include "support/TempFolder.h"

#include <gtest/gtest.h>

namespace korvane {
namespace {

namespace fs = std::filesystem;

TEST(IDsDatabaseManager, TheToolsFolderIsMadeOrItsFailureThrown) {
    TempFolder home;
    const auto applicationCopy = home.path() / "resources" / "Tools" / "usb.ids";
    fs::create_directories(applicationCopy.parent_path());
    writeFileAtomically(applicationCopy, "1b21  Alpha\n");
    const auto tools = home.path() / "support" / "KorvaneGenerator" / "Tools";
    EXPECT_EQ(IDsDatabaseManager::applicationSupportToolsDirectory({home.path() / "support", {}}), tools);
    EXPECT_TRUE(fs::is_directory(tools));
    EXPECT_THROW(IDsDatabaseManager::applicationSupportToolsDirectory({{}, home.path()}),
                 fs::filesystem_error)
        << "an empty support folder must not mean the working folder";

    for (const char* blocker : {"support", "support/KorvaneGenerator", "support/KorvaneGenerator/Tools"}) {
        TempFolder blocked;
        fs::create_directories((blocked.path() / blocker).parent_path());
        writeFileAtomically(blocked.path() / blocker, "a file where a folder goes");
        const IDsDatabaseLocations locations{blocked.path() / "support", home.path() / "resources"};
        EXPECT_THROW(IDsDatabaseManager::applicationSupportToolsDirectory(locations), fs::filesystem_error)
            << blocker;
        // Which copy wins is the name resolver's to show; here, only that a
        // user's folder that can't be made leaves the application's copy in use.
        EXPECT_EQ(IDsDatabaseManager::localDatabaseURL("usb.ids", locations), applicationCopy);
    }
}

} // namespace
} // namespace korvane
