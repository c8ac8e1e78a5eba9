#include "ui/SymbolIcons.h"

#include <QApplication>
#include <QImage>
#include <gtest/gtest.h>

namespace korvane {
namespace {

class SymbolIconsTest : public testing::TestWithParam<const char*> {
  protected:
    void SetUp() override {
        if (!qApp) {
            GTEST_SKIP() << "no Qt platform: run under ctest, which sets QT_QPA_PLATFORM=offscreen";
        }
    }
};

// Every symbol the window uses has a glyph, painted only in the colour asked.
TEST_P(SymbolIconsTest, GlyphIsPaintedInTheGivenColour) {
    const QColor colour(0x12, 0x80, 0xf0);
    const QImage glyph = SymbolIcons::pixmap(GetParam(), 16, colour).toImage();
    ASSERT_FALSE(glyph.isNull());
    int painted = 0;
    for (int y = 0; y < glyph.height(); ++y) {
        for (int x = 0; x < glyph.width(); ++x) {
            const QColor pixel = glyph.pixelColor(x, y);
            if (pixel.alpha() == 255) {
                EXPECT_EQ(pixel.rgb(), colour.rgb());
                ++painted;
            }
        }
    }
    EXPECT_GT(painted, 10);
    EXPECT_FALSE(SymbolIcons::themeNames(GetParam()).isEmpty());
}

INSTANTIATE_TEST_SUITE_P(Window, SymbolIconsTest,
                         testing::Values("arrow.clockwise", "arrow.down.doc.fill",
                                         "externaldrive.connected.to.line.below.fill", "folder.fill",
                                         "heart.fill", "chevron.down", "chevron.right"),
                         [](const testing::TestParamInfo<const char*>& row) {
                             std::string name = row.param;
                             std::erase(name, '.');
                             return name;
                         });

} // namespace
} // namespace korvane
