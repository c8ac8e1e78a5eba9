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

// A button asks its icon for its own size at the screen's scale; the glyph
// must fill that, not a fixed pixmap's share of it.
TEST(SymbolIcons, ButtonIconsFillTheSizeAskedAtEveryScale) {
    const QIcon icon = SymbolIcons::icon("folder.fill", Qt::white, Qt::gray);
    for (const qreal scale : {1.0, 1.5, 2.0}) {
        const QImage image = icon.pixmap(QSize(18, 18), scale).toImage();
        QRect glyph;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                glyph |= image.pixelColor(x, y).alpha() > 128 ? QRect(x, y, 1, 1) : QRect();
            }
        }
        EXPECT_EQ(image.height(), qRound(18 * scale)) << scale;
        EXPECT_GE(glyph.height(), qRound(18 * scale * 0.6)) << "the glyph's height at scale " << scale;
    }
}

} // namespace
} // namespace korvane
