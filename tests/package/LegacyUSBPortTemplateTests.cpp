#include "PackageTestSupport.h"
#include "package/LegacyUSBPortTemplate.h"

#include <gtest/gtest.h>

namespace korvane {
namespace {

using namespace korvane;

struct KeyCase {
    std::string name;
    std::int64_t vendorID;
    std::int64_t deviceID;
    std::optional<std::string> key;
};

class TemplateKeyTest : public ::testing::TestWithParam<KeyCase> {};

TEST_P(TemplateKeyTest, FirstFittingRuleGivesTheKey) {
    EXPECT_EQ(legacyUSBPortTemplateKey(makeController("XHC1", GetParam().vendorID, GetParam().deviceID)),
              GetParam().key);
}

INSTANTIATE_TEST_SUITE_P(Rules, TemplateKeyTest,
                         ::testing::Values(KeyCase{"ASMedia3241", 0x1b21, 0x3241, "1b21_3241"},
                                           KeyCase{"ASMediaOther", 0x1b21, 0x3242, std::nullopt},
                                           KeyCase{"AMD", 0x1002, 0x9cb1, std::nullopt},
                                           KeyCase{"Exact", 0x8086, 0x02ed, "8086_02ed"},
                                           KeyCase{"NextToExactHasNoWildcard", 0x8086, 0xa0ee, std::nullopt},
                                           KeyCase{"ExactBeforeNine", 0x8086, 0x9cb1, "8086_9cb1"},
                                           KeyCase{"Nine", 0x8086, 0x9cb2, "8086_9xxx"},
                                           KeyCase{"NineDBeforeNine", 0x8086, 0x9d2f, "8086_9dxx"},
                                           KeyCase{"SevenE", 0x8086, 0x7e7d, "8086_7exx"},
                                           KeyCase{"SevenF", 0x8086, 0x7f00, std::nullopt},
                                           KeyCase{"Eight", 0x8086, 0x8fff, "8086_8xxx"},
                                           KeyCase{"AboveNine", 0x8086, 0xa000, std::nullopt}),
                         RowName());

// One row per shape: the count and where each run of names begins and ends.
struct ShapeCase {
    std::string name;
    std::uint32_t count;
    std::string runs;
};

class TemplateShapeTest : public ::testing::TestWithParam<ShapeCase> {};

TEST_P(TemplateShapeTest, HasItsCountRunsAndGaps) {
    const LegacyUSBPortTemplate* entry = legacyUSBPortTemplate(GetParam().name);
    ASSERT_NE(entry, nullptr);
    EXPECT_EQ(entry->count, GetParam().count);
    std::string runs;
    for (std::size_t i = 0; i < entry->ports.size(); ++i) {
        const auto& port = entry->ports[i];
        EXPECT_EQ(port.connector, 3);
        const bool continues = i > 0 && port.port == entry->ports[i - 1].port + 1 &&
                               port.name.substr(0, 2) == entry->ports[i - 1].name.substr(0, 2);
        const bool continued = i + 1 < entry->ports.size() && entry->ports[i + 1].port == port.port + 1 &&
                               entry->ports[i + 1].name.substr(0, 2) == port.name.substr(0, 2);
        if (!continues) {
            runs += (runs.empty() ? "" : " ") + port.name + "=" + std::to_string(port.port);
        }
        if (continues && !continued) {
            runs += ".." + port.name + "=" + std::to_string(port.port);
        }
    }
    EXPECT_EQ(runs, GetParam().runs);
}

INSTANTIATE_TEST_SUITE_P(Table, TemplateShapeTest,
                         ::testing::Values(ShapeCase{"1b21_3241", 8, "HSS01=1..HSS02=2 SSS01=3..SSS02=4"},
                                           ShapeCase{"8086_02ed", 16, "HS01=1..HS10=10 SS01=13..SS04=16"},
                                           ShapeCase{"8086_06ed", 26, "HS01=1..HS14=14 SS01=17..SS10=26"},
                                           ShapeCase{"8086_1e31", 8, "HS01=1..HS04=4 SS01=5..SS04=8"},
                                           ShapeCase{"8086_34ed", 18, "HS01=1..HS12=12 SS01=13..SS04=16"},
                                           ShapeCase{"8086_7exx", 26, "HS01=1..HS14=14 SS01=17..SS10=26"},
                                           ShapeCase{"8086_8xxx", 21, "HS01=1..HS14=14 SS01=16..SS06=21"},
                                           ShapeCase{"8086_9cb1", 15, "HS01=1..HS11=11 SS01=12..SS04=15"},
                                           ShapeCase{"8086_9dxx", 18, "HS01=1..HS10=10 SS01=13..SS06=18"},
                                           ShapeCase{"8086_9xxx", 13, "HS01=1..HS09=9 SS01=10..SS04=13"},
                                           ShapeCase{"8086_a87d", 26, "HS01=1..HS14=14 SS01=17..SS10=26"}),
                         RowName());

TEST(TemplateTable, HoldsTwentyTwoEntriesOfWhichFourteenShareOneShape) {
    const LegacyUSBPortTemplate* reference = legacyUSBPortTemplate("8086_06ed");
    ASSERT_NE(reference, nullptr);
    int sharing = 0;
    for (const auto key : legacyUSBPortTemplateKeys()) {
        const LegacyUSBPortTemplate* entry = legacyUSBPortTemplate(key);
        ASSERT_NE(entry, nullptr) << key;
        sharing += entry->count == reference->count && entry->ports.size() == reference->ports.size();
    }
    EXPECT_EQ(legacyUSBPortTemplateKeys().size(), 22u);
    EXPECT_EQ(sharing, 14);
    EXPECT_EQ(legacyUSBPortTemplate("8086_A36D"), nullptr) << "keys match whole and exact";
    EXPECT_EQ(legacyUSBPortTemplate("8086_a36"), nullptr);
}

} // namespace
} // namespace korvane
