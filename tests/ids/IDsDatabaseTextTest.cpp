#include "ids/IDsDatabaseText.h"

#include "records/FileIO.h"
#include "support/BuildTree.h"
#include "support/LiteralIDsWalk.h"

#include <array>
#include <cctype>
#include <gtest/gtest.h>
#include <optional>
#include <random>
#include <set>
#include <sstream>
#include <thread>
#include <utility>

namespace korvane {
namespace {

struct WalkCase {
    const char* name;
    std::string text;
    std::int64_t vendorID;
    std::int64_t deviceID;
    std::string expected;
};

// The walk's rules where a reader would not guess them; the random texts
// below check everything else against the plain reference walk.
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

TEST_P(WalkCaseTest, IndexedSearchAndReferenceGiveTheExpectedName) {
    const WalkCase& row = GetParam();
    EXPECT_EQ(IDsDatabaseText(row.text).name(row.vendorID, row.deviceID), row.expected);
    EXPECT_EQ(LiteralIDsWalk(row.text).name(row.vendorID, row.deviceID), row.expected);
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

// Random texts from the line shapes that steer the walk, each checked against
// the reference for every ID the shapes use.
TEST(IDsDatabaseText, AgreesWithTheReferenceOnRandomTexts) {
    const std::array<const char*, 26> pieces = {
        "1b21", "1B21", "1142",   "0001",   "12345",  "1b21a",  "  ",     "\t",    "\t\t",
        " ",    "#",    "\u00a0", "\u0301", "\u20e3", "Alpha",  "Hub",    "C 09",  "\n",
        "\r\n", "\r",   "\v",     "\f",     "\u0085", "\u2028", "\u2029", "\u3000"};
    const std::array<std::int64_t, 5> ids = {0x1B21, 0x1142, 0x0001, 0x12345, 0x9999};
    std::mt19937 random(20240611);
    std::uniform_int_distribution<std::size_t> pick(0, pieces.size() - 1);
    std::uniform_int_distribution<int> length(0, 40);
    for (int round = 0; round < 3000; ++round) {
        std::string text;
        for (int i = length(random); i > 0; --i) {
            text += pieces[pick(random)];
        }
        const IDsDatabaseText indexed(text);
        const LiteralIDsWalk reference(text);
        for (const auto vendor : ids) {
            for (const auto device : ids) {
                ASSERT_EQ(indexed.name(vendor, device), reference.name(vendor, device))
                    << "text: \"" << text << "\" pair " << std::hex << vendor << ":" << device;
            }
        }
    }
}

// The pairs a real database lists: each tab line's ID with the vendor above
// it, and each vendor with a device of the vendor before (which it lacks).
std::vector<std::pair<std::int64_t, std::int64_t>> listedPairs(const std::string& text) {
    std::vector<std::pair<std::int64_t, std::int64_t>> pairs;
    std::int64_t vendor = -1;
    std::int64_t device = 0xFFFF;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        const bool isDevice = line.starts_with("\t") && !line.starts_with("\t\t");
        const std::string field = line.substr(isDevice ? 1 : 0, 6);
        if (field.size() < 6 || field.substr(4) != "  " || field.find_first_not_of("0123456789abcdef") < 4) {
            continue;
        }
        const std::int64_t id = std::stoll(field.substr(0, 4), nullptr, 16);
        if (!isDevice) {
            vendor = id;
            pairs.emplace_back(vendor, device);
        } else if (vendor >= 0) {
            pairs.emplace_back(vendor, device = id);
        }
    }
    return pairs;
}

class RealDatabaseTest : public ::testing::TestWithParam<const char*> {};

TEST_P(RealDatabaseTest, EveryListedPairAgreesWithReference) {
    const auto path = buildTreeResourceDirectory() / "Tools" / GetParam();
    const auto bytes = readFileBytes(path);
    ASSERT_TRUE(bytes && !bytes->empty()) << "the build makes " << path;
    const IDsDatabaseText indexed(*bytes);
    const LiteralIDsWalk reference(*bytes);
    const auto pairs = listedPairs(*bytes);
    ASSERT_GT(pairs.size(), 1000u);
    std::size_t named = 0;
    for (const auto& [vendor, device] : pairs) {
        const std::string expected = reference.name(vendor, device);
        ASSERT_EQ(indexed.name(vendor, device), expected) << std::hex << vendor << ":" << device;
        named += expected.empty() ? 0 : 1;
    }
    EXPECT_EQ(named, pairs.size());
}

INSTANTIATE_TEST_SUITE_P(Hwdata, RealDatabaseTest, ::testing::Values("usb.ids", "pci.ids"),
                         [](const ::testing::TestParamInfo<const char*>& row) {
                             return std::string(row.param).substr(0, 3);
                         });

} // namespace
} // namespace korvane
