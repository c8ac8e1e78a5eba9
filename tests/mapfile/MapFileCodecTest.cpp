#include "mapfile/MapFileCodec.h"

#include "support/Golden.h"
#include "support/TempFolder.h"
#include "support/USBRecords.h"

#include <gtest/gtest.h>

namespace korvane {
namespace {

using namespace std::chrono_literals;

constexpr const char* hs01 = "8086:a36d|XHC1|14|HS01|01000000";
constexpr const char* ss01 = "8086:a36d|XHC1|14|SS01|11000000";
constexpr const char* hs14 = "8086:a36d|XHC1|14|HS14|0e000000";

// Every field the format has, a key only overridden, one only seen, and a
// nickname outside ASCII.
USBMapFile everyField() {
    USBMapFile map;
    auto controller =
        makeController("XHC1", 0x8086, 0xa36d, {}, "Cannon Lake PCH USB 3.1 xHCI Host Controller");
    controller.location = "14";
    controller.ioNameMatch = "pci8086,a36d";
    controller.providerClass = "AppleIntelCNLUSBXHCI";
    map.machineControllers = {controller};
    map.session.targetModel = "iMac19,1";
    const auto set = [&map](const std::string& key, SessionPort port) {
        map.session.edit(key, [&port](SessionPort& entry) { entry = port; });
    };
    set(hs01, {.selected = true,
               .connector = 10,
               .nickname = "rear, blue, top",
               .socket = hs01,
               .sighting =
                   PortSighting{"SanDisk Ultra", std::chrono::sys_days(2026y / 11 / 22) + 13h + 3min + 9s}});
    set(ss01, {.selected = true, .nickname = "links – vorne ⚡", .socket = hs01});
    set(hs14, {.connector = 255, .note = "behind the card reader"});
    set("1b36:000d|S20|4|HS02|02000000",
        {.sighting = PortSighting{"QEMU USB Tablet", std::chrono::sys_days(2025y / 1 / 1)}});
    return map;
}

TEST(MapFileCodec, WritesTheReviewedTextAndReadsItBackTheSame) {
    const USBMapFile map = everyField();
    const std::string text = mapFileText(map);
    EXPECT_TRUE(matchesGolden(text, "mapfile/session.korvanemap"));
    const MapFileParse parse = parseMapFile(text);
    ASSERT_TRUE(parse.map) << parse.reason;
    EXPECT_EQ(*parse.map, map);

    TempFolder folder;
    writeMapFile(folder.path() / "session.korvanemap", map);
    EXPECT_EQ(readMapFile(folder.path() / "session.korvanemap").map, map);
}

TEST(MapFileCodec, RefusesWhatIsNotAWholeMapOfThisVersionWithOneReason) {
    const std::string valid = mapFileText(everyField());
    auto replaced = [&valid](const std::string& from, const std::string& to) {
        std::string text = valid;
        text.replace(text.find(from), from.size(), to);
        return text;
    };
    const std::tuple<const char*, std::string, MapFileProblem, const char*> rows[] = {
        {"text", "rear, blue, top", MapFileProblem::notAMap, "is not a KorvaneGenerator port map"},
        {"other JSON", R"({"format": "something-else", "ports": {}})", MapFileProblem::notAMap,
         "is not a KorvaneGenerator port map"},
        {"newer", replaced("\"formatVersion\": 1", "\"formatVersion\": 2"), MapFileProblem::newerFormat,
         "was saved by a newer KorvaneGenerator (map format 2; this version reads format 1)"},
        {"cut off", valid.substr(0, valid.size() / 2), MapFileProblem::damaged,
         "is damaged (not complete, valid JSON)"},
        {"connector as text", replaced("\"connector\": 10", "\"connector\": \"Type-C\""),
         MapFileProblem::damaged, "connector is not a whole number)"},
        {"connector past a byte", replaced("\"connector\": 10", "\"connector\": 256"),
         MapFileProblem::damaged, "connector 256 is not from 0 to 255)"},
        {"bad time", replaced("2026-11-22T13:03:09Z", "2026-11-31T13:03:09Z"), MapFileProblem::damaged,
         "lastSeen is not a UTC time like 2026-11-22T13:03:09Z)"},
        {"year 1013", replaced("2026-11-22T13", "1013-11-22T13"), MapFileProblem::damaged,
         "lastSeen is not a UTC time"},
        {"no machine", replaced("\"machine\"", "\"machina\""), MapFileProblem::damaged,
         "is damaged (the map has no \"machine\")"},
        {"bad UTF-8", replaced("rear, blue", "rear\xff blue"), MapFileProblem::damaged, "is damaged"},
        {"escape in a nickname", replaced("rear, blue", "rear\\u001b[2J blue"), MapFileProblem::damaged,
         "nickname is refused: it holds a control character (U+001B))"},
        {"long nickname", replaced("rear, blue, top", std::string(65, 'x')), MapFileProblem::damaged,
         "nickname is refused: it is longer than 64 characters)"},
        {"escape in a key", replaced("|HS14|", "|HS14\\u009b|"), MapFileProblem::damaged,
         "a port key is refused: it holds a control character (U+009B))"},
        {"escape in a socket", replaced("\"socket\": \"8086", "\"socket\": \"\\u001b8086"),
         MapFileProblem::damaged, "socket is refused: it holds a control character (U+001B))"},
        {"escape in a device", replaced("QEMU USB", "QEMU\\u0007USB"), MapFileProblem::damaged,
         "seen device is refused"},
        {"deep", std::string(100, '[') + "\"korvane-port-map\"", MapFileProblem::damaged,
         "nested far too deep"},
        {"huge", std::string(maximumMapFileBytes + 1, ' '), MapFileProblem::unreadable, "is too large"},
    };
    for (const auto& [name, bytes, problem, reason] : rows) {
        const MapFileParse parse = parseMapFile(bytes);
        EXPECT_FALSE(parse.map) << name;
        EXPECT_EQ(parse.problem, problem) << name;
        EXPECT_NE(parse.reason.find(reason), std::string::npos) << name << ": " << parse.reason;
    }
}

} // namespace
} // namespace korvane
