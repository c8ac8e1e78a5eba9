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

TEST_F(IDsDatabaseManagerTest, TheUsersCopyWinsOverTheApplicationsWheneverItExists) {
    struct Row {
        const char* name;
        bool hasUserCopy, hasApplicationCopy, isToolsBlocked;
        std::optional<fs::path> expected;
    };
    const Row rows[] = {
        {"neither", false, false, false, std::nullopt},
        {"application only", false, true, false, applicationTools / "usb.ids"},
        {"both", true, true, false, userTools / "usb.ids"},
        {"tools blocked", false, true, true, applicationTools / "usb.ids"},
    };
    for (const auto& row : rows) {
        TempFolder scratch;
        locations = {scratch.path() / "support", scratch.path() / "resources"};
        userTools = locations.applicationSupportDirectory / "KorvaneGenerator" / "Tools";
        applicationTools = locations.resourceDirectory / "Tools";
        if (row.hasUserCopy) {
            write(userTools / "usb.ids", ""); // an empty copy counts: existence alone decides
        }
        if (row.hasApplicationCopy) {
            write(applicationTools / "usb.ids", "1b21  Alpha\n");
        }
        if (row.isToolsBlocked) {
            write(userTools.parent_path(), "a file where the folder goes");
        }
        auto expected = row.expected;
        if (expected) {
            expected = (row.hasUserCopy ? userTools : applicationTools) / "usb.ids";
        }
        EXPECT_EQ(IDsDatabaseManager::localDatabaseURL("usb.ids", locations), expected) << row.name;
    }
}

} // namespace
} // namespace korvane
