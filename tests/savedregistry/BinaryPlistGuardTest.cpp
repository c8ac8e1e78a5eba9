#include "savedregistry/BinaryPlistGuard.h"

#include "support/TestData.h"

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
    trailer[6] = trailer[7] = 1; // one-byte offsets and references
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

TEST(BinaryPlistGuard, CountsExpandedObjectsAndDepthAgainstTheBudgetQuickly) {
    EXPECT_TRUE(binaryPlistFitsBudget(sharedChain(3), 15, 10));
    EXPECT_FALSE(binaryPlistFitsBudget(sharedChain(3), 14, 10));
    EXPECT_TRUE(binaryPlistFitsBudget(sharedChain(5), 1000, 5));
    EXPECT_FALSE(binaryPlistFitsBudget(sharedChain(5), 1000, 4));
    EXPECT_FALSE(binaryPlistFitsBudget(sharedChain(60), 1'000'000, 100)) << "must not take exponential time";
    const auto archive = testDataBytes("macos/iMac14-2/IORegistryExplorer.ioreg");
    EXPECT_TRUE(binaryPlistFitsBudget(archive, 4 * archive.size() + 4096, 800)) << "a real archive fits";
}

TEST(BinaryPlistGuard, RejectsCyclesMalformedTablesAndKeysHoldingANul) {
    EXPECT_FALSE(binaryPlistFitsBudget(binaryList({{'\xA1', '\x00'}}), 100, 10)) << "an array holding itself";
    EXPECT_FALSE(binaryPlistFitsBudget(binaryList({{'\xA1', '\x05'}}), 100, 10))
        << "a reference past the table";
    EXPECT_FALSE(binaryPlistFitsBudget(binaryList({{'\xA3', '\x00'}}), 100, 10))
        << "references past the object";
    EXPECT_FALSE(binaryPlistFitsBudget(binaryList({"\x51x"}, 3), 100, 10)) << "top object past the table";
    EXPECT_FALSE(binaryPlistFitsBudget("bplist00", 100, 10));

    const std::string nulKey("\123a\0c", 4); // an ASCII string of three: 0x53
    EXPECT_FALSE(binaryPlistFitsBudget(binaryList({{'\xD1', 1, 2}, nulKey, "\x51x"}), 100, 10));
    EXPECT_FALSE(
        binaryPlistFitsBudget(binaryList({{'\xD1', 1, 2}, std::string("\x61\0\0", 3), "\x51x"}), 100, 10))
        << "a UTF-16 key";
    EXPECT_TRUE(binaryPlistFitsBudget(binaryList({{'\xA1', 1}, nulKey}), 100, 10))
        << "a NUL in a value is the reader's to judge";
}

} // namespace
} // namespace korvane
