#include "ids/IDsDatabaseText.h"

#include "base/FileIO.h"
#include "base/Text.h"
#include "support/BuildTree.h"
#include "support/TestData.h"

#include <gtest/gtest.h>
#include <map>
#include <sstream>

namespace korvane {
namespace {

// Name, text, vendor and device ID in hex, and the name they give.
using NameCaseTest = ::testing::TestWithParam<std::vector<std::string>>;

TEST_P(NameCaseTest, GivesTheNameTheLinesSpell) {
    const auto& row = GetParam();
    EXPECT_EQ(IDsDatabaseText(row.at(1)).name(std::stoll(row.at(2), nullptr, 16),
                                              std::stoll(row.at(3), nullptr, 16)),
              row.at(4));
}

INSTANTIATE_TEST_SUITE_P(Cases, NameCaseTest, ::testing::ValuesIn(testDataRows("ids/name-cases.txt")),
                         [](const auto& row) { return row.param.at(0); });

TEST(IDsDatabaseText, OversizedTextIsNoDatabase) {
    std::string text = "1b21  Alpha Chips\n\t1142  Hub Two\n";
    text.resize(IDsDatabaseText::maximumTextBytes + 1, '\n');
    EXPECT_EQ(IDsDatabaseText(text).name(0x1B21, 0x1142), "");
}

// Each pair a real database lists, with the name its lines spell, read by a
// walk of its own that knows only the databases' plain layout: the vendor
// line's text, then that of the first tab line of the vendor's block that
// starts with the device's digits (a subsystem line can come first).
std::map<std::pair<std::int64_t, std::int64_t>, std::string> listedNames(const std::string& text) {
    std::map<std::pair<std::int64_t, std::int64_t>, std::string> names;
    std::int64_t vendor = -1;
    std::string vendorName;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        const bool isTabbed = line.starts_with("\t");
        const std::string field = trimmed(line).substr(0, 5);
        if (field.size() < 5 || field[4] != ' ' || field.find_first_not_of("0123456789abcdef") < 4) {
            vendor = isTabbed || line.empty() || line.starts_with("#") ? vendor : -1;
            continue;
        }
        const std::int64_t id = std::stoll(field.substr(0, 4), nullptr, 16);
        const std::string name = trimmed(trimmed(line).substr(4));
        if (!isTabbed) {
            vendor = id;
            vendorName = name;
            names.emplace(std::pair(vendor, 0x10000), vendorName);
        } else if (vendor >= 0) {
            names.emplace(std::pair(vendor, id), vendorName + " " + name);
        }
    }
    return names;
}

// hwdata's pci.ids and usb.ids as installed (the build copies them into its
// resource folder): every pair they list gets the name its lines spell.
TEST(IDsDatabaseText, EveryPairHwdataListsGetsTheNameItsLinesSpell) {
    for (const char* file : {"usb.ids", "pci.ids"}) {
        const auto path = buildTreeResourceDirectory() / "Tools" / file;
        const auto bytes = readFileBytes(path);
        ASSERT_TRUE(bytes && !bytes->empty()) << "the build makes " << path;
        const IDsDatabaseText database(*bytes);
        const auto names = listedNames(*bytes);
        ASSERT_GT(names.size(), 1000u) << file;
        for (const auto& [pair, name] : names) {
            ASSERT_EQ(database.name(pair.first, pair.second), name)
                << file << " " << std::hex << pair.first << ":" << pair.second;
        }
    }
}

} // namespace
} // namespace korvane
