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

TEST_F(IDsDatabaseManagerTest, ToolsDirectoryIsMadeWithItsParents) {
    EXPECT_EQ(IDsDatabaseManager::applicationSupportToolsDirectory(locations), userTools);
    EXPECT_TRUE(fs::is_directory(userTools));
    EXPECT_EQ(IDsDatabaseManager::applicationSupportToolsDirectory(locations), userTools);
}

TEST_F(IDsDatabaseManagerTest, ToolsDirectoryBlockedByAFileThrowsThePlatformError) {
    for (const char* blocker : {"support", "support/KorvaneGenerator", "support/KorvaneGenerator/Tools"}) {
        TempFolder scratch;
        write(scratch.path() / blocker, "a file where a folder goes");
        EXPECT_THROW(IDsDatabaseManager::applicationSupportToolsDirectory({scratch.path() / "support", {}}),
                     fs::filesystem_error)
            << blocker;
    }
}

TEST_F(IDsDatabaseManagerTest, EmptySupportFolderIsAFailureNotTheWorkingFolder) {
    EXPECT_THROW(IDsDatabaseManager::applicationSupportToolsDirectory({{}, locations.resourceDirectory}),
                 fs::filesystem_error);
}

struct LocationCase {
    const char* name;
    bool hasUserCopy;
    bool hasApplicationCopy;
    bool isToolsBlocked;
    enum { None, User, Application } expected;
};

void PrintTo(const LocationCase& row, std::ostream* out) {
    *out << row.name;
}

const LocationCase locationCases[] = {
    {"NeitherCopy", false, false, false, LocationCase::None},
    {"ApplicationCopyOnly", false, true, false, LocationCase::Application},
    {"UserCopyOnly", true, false, false, LocationCase::User},
    {"UserCopyWins", true, true, false, LocationCase::User},
    {"BlockedToolsFallsBackToApplicationCopy", false, true, true, LocationCase::Application},
    {"BlockedToolsAndNoApplicationCopy", false, false, true, LocationCase::None},
};

class LocalDatabaseURLTest : public IDsDatabaseManagerTest,
                             public ::testing::WithParamInterface<LocationCase> {};

TEST_P(LocalDatabaseURLTest, SearchesUserThenApplicationCopy) {
    const LocationCase& row = GetParam();
    // An empty user copy counts: existence alone decides.
    if (row.hasUserCopy) {
        write(userTools / "usb.ids", "");
    }
    if (row.hasApplicationCopy) {
        write(applicationTools / "usb.ids", "1b21  Alpha\n");
    }
    if (row.isToolsBlocked) {
        write(userTools.parent_path(), "a file where the folder goes");
    }

    std::optional<fs::path> found;
    ASSERT_NO_THROW(found = IDsDatabaseManager::localDatabaseURL("usb.ids", locations));

    switch (row.expected) {
    case LocationCase::None:
        EXPECT_EQ(found, std::nullopt);
        break;
    case LocationCase::User:
        EXPECT_EQ(found, userTools / "usb.ids");
        break;
    case LocationCase::Application:
        EXPECT_EQ(found, applicationTools / "usb.ids");
        break;
    }
    EXPECT_EQ(fs::is_directory(userTools), !row.isToolsBlocked);
    EXPECT_EQ(IDsDatabaseManager::localDatabaseURL("pci.ids", locations), std::nullopt);
}

INSTANTIATE_TEST_SUITE_P(Places, LocalDatabaseURLTest, ::testing::ValuesIn(locationCases),
                         [](const ::testing::TestParamInfo<LocationCase>& row) {
                             return std::string(row.param.name);
                         });

TEST_F(IDsDatabaseManagerTest, FolderNamedLikeTheDatabaseCountsAsACopy) {
    fs::create_directories(userTools / "pci.ids");
    write(applicationTools / "pci.ids", "8086  Intel\n");
    EXPECT_EQ(IDsDatabaseManager::localDatabaseURL("pci.ids", locations), userTools / "pci.ids");
}

} // namespace
} // namespace korvane
