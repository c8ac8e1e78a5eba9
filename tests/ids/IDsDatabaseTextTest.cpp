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

// The pairs a real database lists: each keyed tab line with the vendor above
// it, plus each vendor with a device of its neighbour.
std::vector<std::pair<std::int64_t, std::int64_t>> listedPairs(const std::string& text) {
    auto hexField = [](std::string_view line) -> std::optional<std::int64_t> {
        std::size_t digits = 0;
        while (digits < line.size() && std::isxdigit(static_cast<unsigned char>(line[digits]))) {
            ++digits;
        }
        if (digits != 4) {
            return std::nullopt;
        }
        return std::stoll(std::string(line.substr(0, 4)), nullptr, 16);
    };
    std::vector<std::pair<std::int64_t, std::int64_t>> pairs;
    std::optional<std::int64_t> vendor;
    std::int64_t previousDevice = 0xFFFF;
    std::size_t begin = 0;
    while (begin < text.size()) {
        std::size_t end = text.find('\n', begin);
        end = end == std::string::npos ? text.size() : end;
        std::string_view line(text.data() + begin, end - begin);
        begin = end + 1;
        if (line.empty() || line[0] == '#') {
            continue;
        }
        if (line[0] != '\t') {
            vendor = hexField(line);
            if (vendor) {
                pairs.emplace_back(*vendor, previousDevice);
            }
            continue;
        }
        const auto field = line.find_first_not_of('\t');
        if (const auto device = field == std::string_view::npos ? std::nullopt : hexField(line.substr(field));
            vendor && device) {
            pairs.emplace_back(*vendor, *device);
            previousDevice = *device;
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

TEST(IDsDatabaseText, SearchesFromManyThreadsShareOneIndex) {
    std::string text;
    for (int vendor = 0; vendor < 200; ++vendor) {
        char line[64];
        std::snprintf(line, sizeof line, "%04x  Vendor %d\n\t%04x  Device %d\n", vendor, vendor, vendor + 1,
                      vendor);
        text += line;
    }
    const IDsDatabaseText database(text);
    std::vector<std::thread> threads;
    std::array<int, 4> mismatches{};
    for (std::size_t t = 0; t < mismatches.size(); ++t) {
        threads.emplace_back([&, t] {
            for (int vendor = 0; vendor < 200; ++vendor) {
                const auto expected =
                    "Vendor " + std::to_string(vendor) + " Device " + std::to_string(vendor);
                mismatches[t] += database.name(vendor, vendor + 1) == expected ? 0 : 1;
            }
        });
    }
    for (auto& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(mismatches, (std::array<int, 4>{}));
}

} // namespace
} // namespace korvane
