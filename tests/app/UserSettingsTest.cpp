#include "app/UserSettings.h"

#include "base/FileIO.h"
#include "support/TempFolder.h"

#include <gtest/gtest.h>

namespace korvane {
namespace {

TEST(UserSettings, TheChoiceIsRememberedBesideKeysOfOthersAndBadFilesReadAsDefaults) {
    TempFolder home;
    const auto file = home.path() / "config" / "KorvaneGenerator" / "settings.json";
    const std::string here = userSettingsMachine(std::nullopt);
    const std::string saved = userSettingsMachine(std::filesystem::path("/dumps/../dumps/iMac.txt"));
    EXPECT_EQ(saved, "registry /dumps/iMac.txt");
    EXPECT_EQ(readUserSettings(file).targetModelChoiceFor(here), "") << "no file yet";

    std::filesystem::create_directories(file.parent_path());
    writeFileAtomically(file, R"({"window": {"width": 900}, "targetMacModel": 7})");
    EXPECT_EQ(readUserSettings(file).targetModelChoiceFor(here), "") << "a value of the wrong kind";
    // An earlier version's one model is this machine's.
    writeFileAtomically(file, R"({"window": {"width": 900}, "targetMacModel": "iMac19,1"})");
    EXPECT_EQ(readUserSettings(file).targetModelChoiceFor(here), "iMac19,1");
    updateUserSettings(file, [&](UserSettings& settings) {
        settings.setTargetModelChoice(saved, "iMacPro1,1");
        settings.recentMaps = {"/maps/desk.korvanemap"};
    });
    // Each machine its own choice; another machine's is only an offer.
    const UserSettings read = readUserSettings(file);
    EXPECT_EQ(read.targetModelChoiceFor(here), "iMac19,1");
    EXPECT_EQ(read.targetModelChoiceFor(saved), "iMacPro1,1");
    EXPECT_EQ(read.targetModelChoiceFor("registry /elsewhere.txt"), "");
    EXPECT_NE(read.targetModelOfferFor("registry /elsewhere.txt"), "");
    EXPECT_EQ(read.targetModelOfferFor(here), "iMacPro1,1");
    EXPECT_EQ(readFileBytes(file).value_or("").find("\"targetMacModel\""), std::string::npos)
        << "the one model is written by machine from then on";
    EXPECT_EQ(readUserSettings(file).recentMaps, std::vector<std::string>{"/maps/desk.korvanemap"});
    EXPECT_NE(readFileBytes(file).value_or("").find("\"width\": 900"), std::string::npos)
        << "another version's keys stay";

    for (const char* damaged : {"{\"targetMacModel\": \"iMac", "[\"iMac19,1\"]", "\xff\xfe"}) {
        writeFileAtomically(file, damaged);
        EXPECT_EQ(readUserSettings(file).targetModelChoiceFor(here), "") << damaged;
    }

    writeFileAtomically(home.path() / "plain-file", "x");
    EXPECT_THROW(writeUserSettings(home.path() / "plain-file" / "settings.json", {}), std::exception);
}

} // namespace
} // namespace korvane
