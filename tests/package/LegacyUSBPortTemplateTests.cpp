#include "PackageTestSupport.h"
#include "package/LegacyUSBPortTemplate.h"

#include <gtest/gtest.h>

namespace korvane {
namespace {

TEST(LegacyUSBPortTemplate, TheFirstFittingRuleGivesTheKey) {
    const std::tuple<std::int64_t, std::int64_t, std::optional<std::string>> rows[] = {
        {0x1b21, 0x3241, "1b21_3241"},  {0x1b21, 0x3242, std::nullopt}, {0x1002, 0x9cb1, std::nullopt},
        {0x8086, 0x02ed, "8086_02ed"},  {0x8086, 0xa0ee, std::nullopt}, {0x8086, 0x9cb1, "8086_9cb1"},
        {0x8086, 0x9cb2, "8086_9xxx"},  {0x8086, 0x9d2f, "8086_9dxx"},  {0x8086, 0x7e7d, "8086_7exx"},
        {0x8086, 0x7f00, std::nullopt}, {0x8086, 0x8fff, "8086_8xxx"},  {0x8086, 0xa000, std::nullopt},
    };
    for (const auto& [vendor, device, key] : rows) {
        EXPECT_EQ(legacyUSBPortTemplateKey(makeController("XHC1", vendor, device)), key)
            << std::hex << device;
    }
    EXPECT_EQ(legacyUSBPortTemplate("8086_A36D"), nullptr) << "keys match whole and exact";
    EXPECT_EQ(legacyUSBPortTemplate("8086_a36"), nullptr);
}

} // namespace
} // namespace korvane
