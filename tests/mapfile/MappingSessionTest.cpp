#include "mapfile/MappingSession.h"

#include <gtest/gtest.h>

namespace korvane {
namespace {

using namespace std::chrono_literals;

const auto morning = std::chrono::sys_days(std::chrono::year(2026) / 11 / 22) + 9h;
const auto evening = morning + 9h;

void set(MappingSession& session, const std::string& key, SessionPort port) {
    session.edit(key, [&port](SessionPort& entry) { entry = port; });
}

TEST(MappingSession, TheRuleForAPortsTextRefusesWhatATerminalWouldObey) {
    const std::pair<std::string, const char*> rows[] = {
        {"rear, blue, top", nullptr},
        {"links – vorne ⚡", nullptr},
        {std::string(64, 'x'), nullptr},
        {std::string(65, 'x'), "it is longer than 64 characters"},
        {"rear\x1b[2J", "it holds a control character (U+001B)"},
        {"del\x7f", "it holds a control character (U+007F)"},
        {"csi\xc2\x9b", "it holds a control character (U+009B)"},
        {"cut\xe2\x9a", "it is not valid UTF-8 text"},
    };
    for (const auto& [text, problem] : rows) {
        EXPECT_EQ(portTextProblem(text), problem ? std::optional<std::string>(problem) : std::nullopt)
            << text;
    }
    std::string sixtyFourLightnings;
    for (int i = 0; i < 64; ++i) {
        sixtyFourLightnings += "⚡";
    }
    EXPECT_FALSE(portTextProblem(sixtyFourLightnings)) << "characters are counted, not bytes";
    EXPECT_TRUE(portTextProblem(sixtyFourLightnings + "x"));
}

TEST(MappingSession, APortSaysNothingOnlyWhenEveryFieldIsBlankAndThenIsNoEntry) {
    const SessionPort rows[] = {
        {.selected = true},
        {.connector = 0},
        {.nickname = "front"},
        {.note = "behind the card reader"},
        {.sighting = PortSighting{"SanDisk Ultra", morning}},
    };
    for (const SessionPort& row : rows) {
        MappingSession session;
        set(session, "K", row);
        EXPECT_EQ(session.ports().size(), 1u);
        EXPECT_NE(session, MappingSession{}) << "each field makes the session differ";
        set(session, "K", {});
        EXPECT_EQ(session, MappingSession{}) << "a blank entry is dropped";
    }
}

TEST(MappingSession, UnsavedComparesSightingsByTheirDeviceNotTheirTime) {
    MappingSession saved;
    set(saved, "A", {.selected = true, .sighting = PortSighting{"SanDisk Ultra", morning}});
    MappingSession now = saved;
    now.sawDevices({{"A", "SanDisk Ultra"}}, evening);
    EXPECT_NE(now, saved);
    EXPECT_EQ(now.comparable(), saved.comparable());
    now.sawDevices({{"A", "Keyboard"}}, evening);
    EXPECT_NE(now.comparable(), saved.comparable());
}

TEST(MappingSession, AResetForgetsPicksAndKeepsNamesAndSightings) {
    MappingSession session;
    session.targetModel = "iMac19,1";
    set(session, "A", {.selected = true, .connector = 10, .nickname = "front"});
    set(session, "B", {.selected = true, .connector = 255, .sighting = PortSighting{"Stick", morning}});
    set(session, "C", {.connector = 3});
    session.reset({{"C", "Keyboard"}}, evening);

    MappingSession expected;
    expected.targetModel = "iMac19,1";
    set(expected, "A", {.nickname = "front"});
    set(expected, "B", {.sighting = PortSighting{"Stick", morning}});
    set(expected, "C", {.selected = true, .sighting = PortSighting{"Keyboard", evening}});
    EXPECT_EQ(session, expected);
    EXPECT_EQ(session.selectedKeys(), std::set<std::string>{"C"});
}

TEST(MappingSession, OnlyLaterSightingsAreTakenFromAnother) {
    MappingSession session;
    set(session, "A", {.selected = true, .sighting = PortSighting{"Old", morning}});
    set(session, "B", {.sighting = PortSighting{"Newer here", evening}});
    MappingSession other;
    set(other, "A", {.connector = 10, .sighting = PortSighting{"New", evening}});
    set(other, "B", {.sighting = PortSighting{"Older there", morning}});
    set(other, "C", {.sighting = PortSighting{"Only there", morning}});
    session.takeLaterSightings(other);
    EXPECT_EQ(session.port("A"), (SessionPort{.selected = true, .sighting = PortSighting{"New", evening}}))
        << "the sighting only, not the other's choices";
    EXPECT_EQ(session.port("B").sighting->deviceName, "Newer here");
    EXPECT_EQ(session.port("C").sighting->deviceName, "Only there");
}

} // namespace
} // namespace korvane
