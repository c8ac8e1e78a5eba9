#include "ui/ControllerSection.h"

#include "ViewFixture.h"

namespace korvane {
namespace {

struct HeaderCase {
    const char* name;
    USBControllerMap controller;
    QString shownName, identity, databaseName, portCount;
};

class ControllerSectionHeaders : public ViewFixture, public testing::WithParamInterface<HeaderCase> {};
class ControllerSectionTest : public ViewFixture {};

TEST_P(ControllerSectionHeaders, Texts) {
    const HeaderCase& c = GetParam();
    ControllerSection section(model);
    section.showController(c.controller, true);
    const ControllerSectionHeader& header = *section.header();
    EXPECT_EQ(header.nameText(), c.shownName);
    EXPECT_EQ(header.identityText(), c.identity);
    EXPECT_EQ(header.showsDatabaseName(), !c.databaseName.isEmpty()) << "an empty name leaves no gap";
    EXPECT_EQ(header.databaseNameText(), c.databaseName);
    EXPECT_EQ(header.portCountText(), c.portCount);
    EXPECT_EQ(section.rows().size(), c.controller.ports.size()) << "an open section has a row per port";
}

INSTANTIATE_TEST_SUITE_P(
    Controllers, ControllerSectionHeaders,
    testing::Values(HeaderCase{"Named",
                               makeController("XHC1", 0x8086, 0xa36d, makePorts(3), "Cannon Lake PCH"),
                               "XHC1", "8086:A36D", "Cannon Lake PCH", "3 port(s)"},
                    HeaderCase{"Unnamed", makeController("", 0x1b73, 0x1100, makePorts(1)), "USB Controller",
                               "1B73:1100", "", "1 port(s)"},
                    HeaderCase{"NoPorts", makeController("XHC9", 0x1, 0xabcde, {}), "XHC9", "0001:ABCDE", "",
                               "0 port(s)"}),
    [](const testing::TestParamInfo<HeaderCase>& row) { return std::string(row.param.name); });

TEST_F(ControllerSectionTest, RowsAreMadeOnFirstOpeningAndKeptAfter) {
    const auto controller = makeController("XHC1", 0x8086, 0xa36d, makePorts(3));
    ControllerSection section(model);
    section.showController(controller, false);
    EXPECT_TRUE(section.rows().empty()) << "a closed section builds no rows";
    section.showController(controller, true);
    const auto rows = section.rows();
    EXPECT_EQ(rows.size(), 3u);
    section.showController(controller, false);
    section.showController(controller, true);
    EXPECT_EQ(section.rows(), rows);
}

} // namespace
} // namespace korvane
