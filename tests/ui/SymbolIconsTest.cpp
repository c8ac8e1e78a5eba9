#include "ui/SymbolIcons.h"

#include <QApplication>
#include <QIcon>
#include <QImage>
#include <gtest/gtest.h>

namespace korvane {
namespace {

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
