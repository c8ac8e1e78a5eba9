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

// Two vendors: 1b21 is Alpha Chips with device 1142 Hub Two,
// followed by another vendor.
const std::string alpha = "1b21  Alpha Chips\n\t1142  Hub Two\n1b22  Other\n\t1143  Else\n";

const WalkCase walkCases[] = {
    {"DeviceFound", alpha, 0x1B21, 0x1142, "Alpha Chips Hub Two"},
    {"DeviceMissingGivesVendor", alpha, 0x1B21, 0x9999, "Alpha Chips"},
    {"VendorMissingGivesEmpty", alpha, 0xFFFE, 0x1142, ""},
    {"DeviceOfNextVendorNotFound", alpha, 0x1B21, 0x1143, "Alpha Chips"},
    {"EmptyText", "", 0x1B21, 0x1142, ""},
    {"InvalidUTF8IsNoText", "1b21  Alpha\n\t1142  Hub \xff\n", 0x1B21, 0x1142, ""},
    {"UpperCaseHexKeepsNameCase", "1B21  Alpha CHIPS\n\t114A  hub TWO\n", 0x1B21, 0x114A,
     "Alpha CHIPS hub TWO"},
    {"VendorOnlyDigitsGivesDeviceAlone", "1b21\n\t1142  Hub Two\n", 0x1B21, 0x1142, "Hub Two"},
    {"DeviceOnlyDigitsGivesVendorAlone", "1b21  Alpha\n\t1142\n", 0x1B21, 0x1142, "Alpha"},
    {"BothOnlyDigits", "1b21\n\t1142\n", 0x1B21, 0x1142, ""},
    {"TabAfterVendorHexNoMatch", "1b21\tAlpha\n\t1142  Hub\n", 0x1B21, 0x1142, ""},
    {"TabAfterDeviceHexNoMatch", "1b21  Alpha\n\t1142\tHub\n", 0x1B21, 0x1142, "Alpha"},
    {"LongerHexNoMatch", "1b21a  Alpha\n1b21  Beta\n", 0x1B21, 0x0001, "Beta"},
    {"BlankIndentedDeviceEndsBlock", "1b21  Alpha\n  1142  Hub\n\t1142  Late\n", 0x1B21, 0x1142, "Alpha"},
    {"BlankIndentedVendorLineMatches", "  1b21  Alpha\n\t1142  Hub\n", 0x1B21, 0x1142, "Alpha Hub"},
    {"CommentAndBlankInsideBlock", "1b21  Alpha\n# note\n\n \t \n\t1142  Hub\n", 0x1B21, 0x1142, "Alpha Hub"},
    {"BlankIndentedCommentEndsBlock", "1b21  Alpha\n  # note\n\t1142  Hub\n", 0x1B21, 0x1142, "Alpha"},
    {"TabIndentedCommentIsCandidate", "1b21  Alpha\n\t# 1142\n\t1142  Hub\n", 0x1B21, 0x1142, "Alpha Hub"},
    {"CommentedVendorIgnored", "#1b21  Old\n1b21  Alpha\n", 0x1B21, 0x1142, "Alpha"},
    {"TwoTabLineMatchesAsDevice", "1b21  Alpha\n\t1000  Dev\n\t\t1142 0001  Sub\n", 0x1B21, 0x1142,
     "Alpha 0001  Sub"},
    {"EarlierSubsystemLineWins", "1b21  Alpha\n\t\t1142 0001  Sub\n\t1142  Hub\n", 0x1B21, 0x1142,
     "Alpha 0001  Sub"},
    {"EarlierDeviceLineWins", "1b21  Alpha\n\t1142  Hub\n\t\t1142 0001  Sub\n", 0x1B21, 0x1142, "Alpha Hub"},
    {"OtherTopLevelLineEndsBlock", "1b21  Alpha\nC 09  Hub\n\t1142  Hub\n", 0x1B21, 0x1142, "Alpha"},
    {"DeviceBeforeAnyVendorIgnored", "\t1142  Early\n1b21  Alpha\n\t1142  Hub\n", 0x1B21, 0x1142,
     "Alpha Hub"},
    {"FirstVendorBlockWins", "1b21  Alpha\n1c00  X\n1b21  Beta\n\t1142  Hub\n", 0x1B21, 0x1142, "Alpha"},
    {"RepeatedVendorLineRenamesBlock", "1b21  Alpha\n\t1000  A\n1B21  Beta\n\t1142  Hub\n", 0x1B21, 0x1142,
     "Beta Hub"},
    {"RepeatedVendorLineEarlierDevice", "1b21  Alpha\n\t1000  A\n1B21  Beta\n", 0x1B21, 0x1000, "Alpha A"},
    {"BlockRunsToEndOfText", "1b21  Alpha\n\t0001  x", 0x1B21, 0x0002, "Alpha"},
    {"ShortIDsArePadded", "0001  One\n\t000a  Ten\n", 0x1, 0xA, "One Ten"},
    {"LongIDDropsOnlyFourCharacters", "12345  Five\n", 0x12345, 0x0, "5  Five"},
    {"NegativeIDUsesLow32Bits", "ffffffff  All\n", -1, 0x0, "ffff  All"},
    {"CarriageReturnLineFeed", "1b21  Alpha\r\n\t1142  Hub\r\n1b22  B\r\n", 0x1B21, 0x1142, "Alpha Hub"},
    {"CarriageReturnAlone", "1b21  Alpha\r\t1142  Hub\r", 0x1B21, 0x1142, "Alpha Hub"},
    {"VerticalTab", "1b21  Alpha\v\t1142  Hub", 0x1B21, 0x1142, "Alpha Hub"},
    {"FormFeed", "1b21  Alpha\f\t1142  Hub", 0x1B21, 0x1142, "Alpha Hub"},
    {"NextLine", "1b21  Alpha\u0085\t1142  Hub", 0x1B21, 0x1142, "Alpha Hub"},
    {"LineSeparator", "1b21  Alpha\u2028\t1142  Hub", 0x1B21, 0x1142, "Alpha Hub"},
    {"ParagraphSeparator", "1b21  Alpha\u2029\t1142  Hub", 0x1B21, 0x1142, "Alpha Hub"},
    {"LineSeparatorEndsBlockLine", "1b21  Alpha\u2028C 09\n\t1142  Hub", 0x1B21, 0x1142, "Alpha"},
    {"UnicodeSpacesTrimmed", "\u00a01b21 Alpha\u3000\n\t1142 \u2003Hub\u202f\n", 0x1B21, 0x1142, "Alpha Hub"},
    {"OnlyUnicodeSpacesLineSkipped", "1b21  Alpha\n\u2000\u00a0\n\t1142  Hub\n", 0x1B21, 0x1142, "Alpha Hub"},
    {"NoBreakSpaceIsNoSeparator", "1b21\u00a0Alpha\n", 0x1B21, 0x0, ""},
    {"CombiningMarkOnBlankNoMatch", "1b21 \u0301Alpha\n", 0x1B21, 0x0, ""},
    {"CombiningMarkOnHashIsNoComment", "1b21  Alpha\n#\u20e3\n\t1142  Hub\n", 0x1B21, 0x1142, "Alpha"},
    {"CombiningMarkAfterNameKept", "1b21  Alpha\u0301\n", 0x1B21, 0x0, "Alpha\u0301"},
    {"NamesNotOnlyASCII", "1b21  Ålpha\n\t1142  Hüb Zwei\n", 0x1B21, 0x1142, "Ålpha Hüb Zwei"},
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

TEST(IDsDatabaseTextTest, OversizedTextIsNoDatabase) {
    std::string text = alpha;
    text.resize(IDsDatabaseText::maximumTextBytes + 1, '\n');
    EXPECT_EQ(IDsDatabaseText(text).name(0x1B21, 0x1142), "");
}

// Random texts from the line shapes that steer the walk, each checked against
// the reference for every ID the shapes use.
TEST(IDsDatabaseTextTest, AgreesWithReferenceOnRandomTexts) {
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
    if (!bytes || bytes->empty()) {
        GTEST_SKIP() << "no application copy at " << path << " (built by korvane_ids_databases)";
    }
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

TEST(IDsDatabaseTextTest, SearchesFromManyThreadsShareOneIndex) {
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
