#include "ui/ControllerSection.h"

#include "ViewFixture.h"

namespace korvane {
namespace {

class ControllerSectionTest : public ViewFixture {};

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
