#include "ui/SymbolIcons.h"

#include <QApplication>
#include <QImage>
#include <gtest/gtest.h>

namespace korvane {
namespace {

// Every symbol the window uses has a glyph, painted only in the colour asked.
TEST(SymbolIcons, EveryGlyphIsPaintedInTheGivenColour) {
    const QColor colour(0x12, 0x80, 0xf0);
    for (const char* symbol :
         {"arrow.clockwise", "arrow.down.doc.fill", "externaldrive.connected.to.line.below.fill",
          "folder.fill", "heart.fill", "chevron.down", "chevron.right"}) {
        const QImage glyph = SymbolIcons::pixmap(symbol, 16, colour).toImage();
        int painted = 0;
        int strays = 0;
        for (int y = 0; y < glyph.height(); ++y) {
            for (int x = 0; x < glyph.width(); ++x) {
                const QColor pixel = glyph.pixelColor(x, y);
                painted += pixel.alpha() == 255 ? 1 : 0;
                strays += pixel.alpha() == 255 && pixel.rgb() != colour.rgb() ? 1 : 0;
            }
        }
        EXPECT_GT(painted, 10) << symbol;
        EXPECT_EQ(strays, 0) << symbol;
        EXPECT_FALSE(SymbolIcons::themeNames(symbol).isEmpty()) << symbol;
    }
}

} // namespace
} // namespace korvane
