#include "savedregistry/BinaryPlistGuard.h"

#include "records/FileIO.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace korvane {
namespace {

// A binary list by hand: one-byte offsets and references, objects in order.
std::string binaryList(const std::vector<std::string>& objects, std::uint8_t top = 0) {
    std::string bytes = "bplist00";
    std::vector<std::uint8_t> offsets;
    for (const auto& object : objects) {
        offsets.push_back(static_cast<std::uint8_t>(bytes.size()));
        bytes += object;
    }
    const auto table = static_cast<std::uint8_t>(bytes.size());
    for (auto offset : offsets) {
        bytes.push_back(static_cast<char>(offset));
    }
    std::string trailer(32, '\0');
    trailer[6] = 1;
    trailer[7] = 1;
    trailer[15] = static_cast<char>(objects.size());
    trailer[23] = static_cast<char>(top);
    trailer[31] = static_cast<char>(table);
    return bytes + trailer;
}

// Each array holds its successor twice: 2^levels objects once expanded.
std::string sharedChain(int levels) {
    std::vector<std::string> objects;
    for (int i = 0; i < levels; ++i) {
        objects.push_back({'\xA2', static_cast<char>(i + 1), static_cast<char>(i + 1)});
    }
    objects.push_back("\x51x");
    return binaryList(objects);
}

TEST(BinaryPlistGuard, CountsExpandedObjectsAgainstTheBudget) {
    EXPECT_TRUE(binaryPlistFitsBudget(sharedChain(3), 15, 10));
    EXPECT_FALSE(binaryPlistFitsBudget(sharedChain(3), 14, 10));
    EXPECT_FALSE(binaryPlistFitsBudget(sharedChain(60), 1'000'000, 100)) << "must not take exponential time";
}

TEST(BinaryPlistGuard, LimitsDepth) {
    EXPECT_TRUE(binaryPlistFitsBudget(sharedChain(5), 1000, 5));
    EXPECT_FALSE(binaryPlistFitsBudget(sharedChain(5), 1000, 4));
}

TEST(BinaryPlistGuard, RejectsCyclesAndMalformedTables) {
    EXPECT_FALSE(binaryPlistFitsBudget(binaryList({{'\xA1', '\x00'}}), 100, 10)) << "an array holding itself";
    EXPECT_FALSE(binaryPlistFitsBudget(binaryList({{'\xA1', '\x05'}}), 100, 10))
        << "a reference past the table";
    EXPECT_FALSE(binaryPlistFitsBudget(binaryList({{'\xA3', '\x00'}}), 100, 10))
        << "references past the object";
    EXPECT_FALSE(binaryPlistFitsBudget(binaryList({"\x51x"}, 3), 100, 10)) << "top object past the table";
    EXPECT_FALSE(binaryPlistFitsBudget("bplist00", 100, 10));
    std::string broken = sharedChain(3);
    broken[broken.size() - 1] = '\x7f';
    EXPECT_FALSE(binaryPlistFitsBudget(broken, 100, 10)) << "offset table past the end";
}

TEST(BinaryPlistGuard, RejectsDictionaryKeysHoldingANul) {
    EXPECT_TRUE(binaryPlistFitsBudget(binaryList({{'\xD1', 1, 2},
                                                  std::string("\x53"
                                                              "abc",
                                                              4),
                                                  "\x51x"}),
                                      100, 10));
    EXPECT_FALSE(binaryPlistFitsBudget(binaryList({{'\xD1', 1, 2},
                                                   std::string("\x53"
                                                               "a\0c",
                                                               4),
                                                   "\x51x"}),
                                       100, 10));
    EXPECT_FALSE(
        binaryPlistFitsBudget(binaryList({{'\xD1', 1, 2}, std::string("\x61\0\0", 3), "\x51x"}), 100, 10))
        << "a UTF-16 key";
    EXPECT_TRUE(binaryPlistFitsBudget(binaryList({{'\xA1', 1},
                                                  std::string("\x53"
                                                              "a\0c",
                                                              4)}),
                                      100, 10))
        << "a NUL in a value is the reader's to judge";
}

TEST(BinaryPlistGuard, AcceptsARealArchiveWithinTheSnapshotBudget) {
    const auto bytes = readFileBytes(std::filesystem::path(KORVANE_TEST_DATA_DIR) /
                                     "macos/iMac14-2/IORegistryExplorer.ioreg");
    if (!bytes) {
        GTEST_SKIP() << "fixture missing: macos/iMac14-2/IORegistryExplorer.ioreg";
    }
    EXPECT_TRUE(binaryPlistFitsBudget(*bytes, 4 * bytes->size() + 4096, 800));
}

} // namespace
} // namespace korvane
