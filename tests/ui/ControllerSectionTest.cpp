#include "ui/ControllerSection.h"

#include "ViewFixture.h"

namespace korvane {
namespace {

class ControllerSectionTest : public ViewFixture {};

TEST_F(ControllerSectionTest, TheHeaderNamesTheControllerAndLeavesNoGapForAMissingName) {
    const std::tuple<USBControllerMap, QString> rows[] = {
        {makeController("XHC1", 0x8086, 0xa36d, makePorts(3), "Cannon Lake PCH"),
         "XHC1|8086:A36D|Cannon Lake PCH|3 port(s)"},
        {makeController("", 0x1b73, 0x1100, makePorts(1)), "USB Controller|1B73:1100||1 port(s)"},
        {makeController("XHC9", 0x1, 0xabcde), "XHC9|0001:ABCDE||0 port(s)"},
    };
    for (const auto& [controller, texts] : rows) {
        ControllerSection section(model);
        section.showController(controller, true);
        const ControllerSectionHeader& header = *section.header();
        EXPECT_EQ(header.nameText() + "|" + header.identityText() + "|" + header.databaseNameText() + "|" +
                      header.portCountText(),
                  texts);
        EXPECT_EQ(header.showsDatabaseName(), !controller.usbDeviceName.empty());
        EXPECT_EQ(section.rows().size(), controller.ports.size()) << "an open section has a row per port";
    }
}

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
