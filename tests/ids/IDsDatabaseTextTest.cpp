#include "ids/IDsDatabaseText.h"

#include "records/FileIO.h"
#include "records/Text.h"
#include "support/BuildTree.h"

#include <gtest/gtest.h>
#include <map>
#include <sstream>

namespace korvane {
namespace {

struct WalkCase {
    const char* name;
    std::string text;
    std::int64_t vendorID;
    std::int64_t deviceID;
    std::string expected;
};

// The walk's rules where a reader would not guess them.
const std::string alpha = "1b21  Alpha Chips\n\t1142  Hub Two\n1b22  Other\n\t1143  Else\n";

const WalkCase walkCases[] = {
    {"DeviceFound", alpha, 0x1B21, 0x1142, "Alpha Chips Hub Two"},
    {"DeviceMissingGivesVendor", alpha, 0x1B21, 0x9999, "Alpha Chips"},
    {"DeviceOfNextVendorNotFound", alpha, 0x1B21, 0x1143, "Alpha Chips"},
    {"InvalidUTF8IsNoText", "1b21  Alpha\n\t1142  Hub \xff\n", 0x1B21, 0x1142, ""},
    {"BlankIndentedDeviceEndsBlock", "1b21  Alpha\n  1142  Hub\n\t1142  Late\n", 0x1B21, 0x1142, "Alpha"},
    {"CommentAndBlankInsideBlock", "1b21  Alpha\n# note\n\n \t \n\t1142  Hub\n", 0x1B21, 0x1142, "Alpha Hub"},
    {"TwoTabLineMatchesAsDevice", "1b21  Alpha\n\t1000  Dev\n\t\t1142 0001  Sub\n", 0x1B21, 0x1142,
     "Alpha 0001  Sub"},
    {"FirstVendorBlockWins", "1b21  Alpha\n1c00  X\n1b21  Beta\n\t1142  Hub\n", 0x1B21, 0x1142, "Alpha"},
    {"RepeatedVendorLineRenamesBlock", "1b21  Alpha\n\t1000  A\n1B21  Beta\n\t1142  Hub\n", 0x1B21, 0x1142,
     "Beta Hub"},
    {"LongIDDropsOnlyFourCharacters", "12345  Five\n", 0x12345, 0x0, "5  Five"},
    {"NegativeIDUsesLow32Bits", "ffffffff  All\n", -1, 0x0, "ffff  All"},
    {"LineSeparatorEndsALine", "1b21  Alpha\u2028\t1142  Hub", 0x1B21, 0x1142, "Alpha Hub"},
    {"UnicodeSpacesTrimmed", "\u00a01b21 Alpha\u3000\n\t1142 \u2003Hub\u202f\n", 0x1B21, 0x1142, "Alpha Hub"},
    {"NoBreakSpaceIsNoSeparator", "1b21\u00a0Alpha\n", 0x1B21, 0x0, ""},
    {"CombiningMarkOnHashIsNoComment", "1b21  Alpha\n#\u20e3\n\t1142  Hub\n", 0x1B21, 0x1142, "Alpha"},
    {"KelvinSignIsNoHexDigit", "1b2\u212a  Kelvin\n", 0x1B2B, 0x0, ""},
};

void PrintTo(const WalkCase& row, std::ostream* out) {
    *out << row.name;
}

class WalkCaseTest : public ::testing::TestWithParam<WalkCase> {};

TEST_P(WalkCaseTest, GivesTheExpectedName) {
    const WalkCase& row = GetParam();
    EXPECT_EQ(IDsDatabaseText(row.text).name(row.vendorID, row.deviceID), row.expected);
}

INSTANTIATE_TEST_SUITE_P(Quirks, WalkCaseTest, ::testing::ValuesIn(walkCases),
                         [](const ::testing::TestParamInfo<WalkCase>& row) {
                             return std::string(row.param.name);
                         });

TEST(IDsDatabaseText, OversizedTextIsNoDatabase) {
    std::string text = alpha;
    text.resize(IDsDatabaseText::maximumTextBytes + 1, '\n');
    EXPECT_EQ(IDsDatabaseText(text).name(0x1B21, 0x1142), "");
}

// Each pair a real database lists, with the name its lines spell: the vendor
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

class RealDatabaseTest : public ::testing::TestWithParam<const char*> {};

TEST_P(RealDatabaseTest, EveryListedPairGetsTheNameItsLinesSpell) {
    const auto path = buildTreeResourceDirectory() / "Tools" / GetParam();
    const auto bytes = readFileBytes(path);
    ASSERT_TRUE(bytes && !bytes->empty()) << "the build makes " << path;
    const IDsDatabaseText database(*bytes);
    const auto names = listedNames(*bytes);
    ASSERT_GT(names.size(), 1000u);
    for (const auto& [pair, name] : names) {
        ASSERT_EQ(database.name(pair.first, pair.second), name)
            << std::hex << pair.first << ":" << pair.second;
    }
}

INSTANTIATE_TEST_SUITE_P(Hwdata, RealDatabaseTest, ::testing::Values("usb.ids", "pci.ids"),
                         [](const ::testing::TestParamInfo<const char*>& row) {
                             return std::string(row.param).substr(0, 3);
                         });

} // namespace
} // namespace korvane
