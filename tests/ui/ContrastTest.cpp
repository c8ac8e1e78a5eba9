#include "ui/Contrast.h"

#include "ui/WindowStyle.h"

#include <QApplication>
#include <QStyle>
#include <gtest/gtest.h>

namespace korvane {
namespace {

TEST(Contrast, RatiosAsWCAGDefinesThem) {
    const std::tuple<QColor, QColor, double> rows[] = {
        {Qt::black, Qt::white, 21.0},
        {Qt::white, Qt::black, 21.0},
        {Qt::white, Qt::white, 1.0},
        {QColor(0x76, 0x76, 0x76), Qt::white, 4.54}, // the grey that just passes on white
        {QColor(0, 0, 0, 128), Qt::white, 4.00},     // half-transparent black is a mid grey
    };
    for (const auto& [foreground, background, ratio] : rows) {
        EXPECT_NEAR(contrastRatio(foreground, background), ratio, 0.01) << foreground.name().toStdString();
    }
}

// Both palettes the window ships with: the style's own light one and --dark.
TEST(Contrast, EveryTextAndBorderOfTheWindowMeetsAA) {
    const std::pair<const char*, QPalette> palettes[] = {
        {"light", QApplication::style()->standardPalette()},
        {"dark", WindowStyle::darkPalette()},
    };
    for (const auto& [name, palette] : palettes) {
        for (const auto& pair : WindowStyle(palette).contrastPairs()) {
            EXPECT_GE(contrastRatio(pair.foreground, pair.background), pair.minimum)
                << name << ": " << pair.what.toStdString() << " "
                << pair.foreground.name(QColor::HexArgb).toStdString() << " on "
                << pair.background.name().toStdString();
        }
    }
}

} // namespace
} // namespace korvane
