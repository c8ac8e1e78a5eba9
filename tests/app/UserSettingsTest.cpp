#include "app/UserSettings.h"

#include "records/FileIO.h"
#include "support/TempFolder.h"

#include <gtest/gtest.h>

namespace korvane {
namespace {

TEST(UserSettings, TheChoiceIsRememberedBesideKeysOfOthersAndBadFilesReadAsDefaults) {
    TempFolder home;
    const auto file = home.path() / "config" / "KorvaneGenerator" / "settings.json";
    EXPECT_EQ(readUserSettings(file).targetModelChoice, "") << "no file yet";

    std::filesystem::create_directories(file.parent_path());
    writeFileAtomically(file, R"({"window": {"width": 900}, "targetMacModel": 7})");
    EXPECT_EQ(readUserSettings(file).targetModelChoice, "") << "a value of the wrong kind";
    writeUserSettings(file, {"iMac19,1"});
    EXPECT_EQ(readUserSettings(file).targetModelChoice, "iMac19,1");
    EXPECT_NE(readFileBytes(file).value_or("").find("\"width\": 900"), std::string::npos)
        << "another version's keys stay";

    for (const char* damaged : {"{\"targetMacModel\": \"iMac", "[\"iMac19,1\"]", "\xff\xfe"}) {
        writeFileAtomically(file, damaged);
        EXPECT_EQ(readUserSettings(file).targetModelChoice, "") << damaged;
    }

    writeFileAtomically(home.path() / "plain-file", "x");
    EXPECT_THROW(writeUserSettings(home.path() / "plain-file" / "settings.json", {"Mac"}), std::exception);
}

} // namespace
} // namespace korvane
