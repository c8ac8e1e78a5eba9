#include "ids/IDsDatabaseManager.h"

#include "records/FileIO.h"
#include "support/TempFolder.h"

#include <gtest/gtest.h>

namespace korvane {
namespace {

namespace fs = std::filesystem;

class IDsDatabaseManagerTest : public ::testing::Test {
  protected:
    TempFolder folder;
    // The support folder doesn't exist yet: the first call makes it.
    IDsDatabaseLocations locations{folder.path() / "support" / "nested", folder.path() / "resources"};
    fs::path userTools = locations.applicationSupportDirectory / "KorvaneGenerator" / "Tools";
    fs::path applicationTools = locations.resourceDirectory / "Tools";

    void write(const fs::path& path, std::string_view bytes) {
        fs::create_directories(path.parent_path());
        writeFileAtomically(path, bytes);
    }
};

TEST_F(IDsDatabaseManagerTest, TheToolsFolderIsMadeOrItsFailureThrown) {
    EXPECT_EQ(IDsDatabaseManager::applicationSupportToolsDirectory(locations), userTools);
    EXPECT_TRUE(fs::is_directory(userTools));
    for (const char* blocker : {"support", "support/KorvaneGenerator", "support/KorvaneGenerator/Tools"}) {
        TempFolder scratch;
        write(scratch.path() / blocker, "a file where a folder goes");
        EXPECT_THROW(IDsDatabaseManager::applicationSupportToolsDirectory({scratch.path() / "support", {}}),
                     fs::filesystem_error)
            << blocker;
    }
    EXPECT_THROW(IDsDatabaseManager::applicationSupportToolsDirectory({{}, locations.resourceDirectory}),
                 fs::filesystem_error)
        << "an empty support folder must not mean the working folder";
}

// Which copy wins is the name resolver's to show; here, only that a user's
// folder that can't be made leaves the application's copy in use.
TEST_F(IDsDatabaseManagerTest, ABlockedToolsFolderLeavesTheApplicationsCopy) {
    write(userTools.parent_path(), "a file where the folder goes");
    EXPECT_EQ(IDsDatabaseManager::localDatabaseURL("usb.ids", locations), std::nullopt);
    write(applicationTools / "usb.ids", "1b21  Alpha\n");
    EXPECT_EQ(IDsDatabaseManager::localDatabaseURL("usb.ids", locations), applicationTools / "usb.ids");
}

} // namespace
} // namespace korvane
