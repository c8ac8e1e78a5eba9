#include "ui/WindowStyle.h"

#include <QApplication>
#include <QFontDatabase>
#include <QWidget>

namespace korvane {

namespace {

// Point sizes of the design's text styles against its 13-point body text.
double designSize(TextStyle style) {
    switch (style) {
    case TextStyle::title:
        return 20;
    case TextStyle::headline:
        return 13;
    case TextStyle::subheadline:
        return 11;
    case TextStyle::callout:
        return 12;
    case TextStyle::caption:
        return 10;
    case TextStyle::caption2:
        return 10;
    case TextStyle::generate:
        return 15;
    }
    return 13;
}

QColor withAlpha(QColor color, double opacity) {
    color.setAlphaF(static_cast<float>(color.alphaF() * opacity));
    return color;
}

} // namespace

WindowStyle::WindowStyle(const QPalette& palette)
    : palette_(palette), isDark_(palette.color(QPalette::Window).lightness() < 128) {}

QFont WindowStyle::font(TextStyle style, QFont::Weight weight, FontDesign design) {
    QFont font = design == FontDesign::monospaced ? QFontDatabase::systemFont(QFontDatabase::FixedFont)
                                                  : QApplication::font();
    const double body = QApplication::font().pointSizeF() > 0 ? QApplication::font().pointSizeF() : 10.0;
    font.setPointSizeF(body * designSize(style) / 13.0);
    // The headline style is bold by definition.
    font.setWeight(style == TextStyle::headline && weight == QFont::Normal ? QFont::Bold : weight);
    return font;
}

QColor WindowStyle::windowBackground() const {
    return palette_.color(QPalette::Window);
}

QColor WindowStyle::panelBackground() const {
    if (!isDark_) {
        return QColor(0x2b, 0x30, 0x3a);
    }
    return palette_.color(QPalette::Base);
}

QColor WindowStyle::listBackground() const {
    if (!isDark_) {
        return QColor(0x1f, 0x23, 0x2b);
    }
    return palette_.color(QPalette::Base).lighter(140);
}

QColor WindowStyle::secondary(double opacity) const {
    return withAlpha(withAlpha(palette_.color(QPalette::WindowText), 0.6), opacity);
}

QColor WindowStyle::secondaryOnPanel(double opacity) const {
    return isDark_ ? secondary(opacity) : white(0.62 * opacity);
}

QColor WindowStyle::divider() const {
    return withAlpha(palette_.color(QPalette::WindowText), isDark_ ? 0.22 : 0.15);
}

QColor WindowStyle::thinMaterial() const {
    return withAlpha(palette_.color(QPalette::Base), isDark_ ? 0.55 : 0.7);
}

QColor WindowStyle::materialEdge() const {
    return withAlpha(palette_.color(QPalette::WindowText), 0.12);
}

QColor WindowStyle::accent() const {
    return palette_.color(QPalette::Highlight);
}

QColor WindowStyle::orange() const {
    return isDark_ ? QColor(0xff, 0x9f, 0x0a) : QColor(0xff, 0x95, 0x00);
}

QColor WindowStyle::warning() const {
    return isDark_ ? QColor(0xff, 0xb3, 0x40) : QColor(0xa8, 0x52, 0x00);
}

QColor WindowStyle::green() const {
    return isDark_ ? QColor(0x30, 0xd1, 0x58) : QColor(0x28, 0xb4, 0x46);
}

QColor WindowStyle::white(double opacity) {
    return withAlpha(QColor(Qt::white), opacity);
}

QPalette WindowStyle::editorPalette() const {
    if (isDark_) {
        return palette_;
    }
    QPalette palette = palette_;
    const QColor text(0xf2, 0xf3, 0xf5);
    const QColor dimmed(0x8a, 0x8f, 0x99);
    palette.setColor(QPalette::Window, panelBackground());
    palette.setColor(QPalette::Base, listBackground());
    palette.setColor(QPalette::AlternateBase, panelBackground());
    palette.setColor(QPalette::Button, QColor(0x3c, 0x42, 0x4f));
    palette.setColor(QPalette::Light, QColor(0x55, 0x5c, 0x6b));
    palette.setColor(QPalette::Midlight, QColor(0x48, 0x4f, 0x5d));
    palette.setColor(QPalette::Mid, QColor(0x30, 0x35, 0x40));
    palette.setColor(QPalette::Dark, QColor(0x18, 0x1b, 0x21));
    palette.setColor(QPalette::Shadow, QColor(0x0c, 0x0e, 0x12));
    for (auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::BrightText}) {
        palette.setColor(QPalette::Active, role, text);
        palette.setColor(QPalette::Inactive, role, text);
        palette.setColor(QPalette::Disabled, role, dimmed);
    }
    palette.setColor(QPalette::Disabled, QPalette::Button, QColor(0x33, 0x38, 0x43));
    palette.setColor(QPalette::PlaceholderText, dimmed);
    return palette;
}

void WindowStyle::setTextColor(QWidget& widget, const QColor& color) {
    QPalette palette = widget.palette();
    for (auto group : {QPalette::Active, QPalette::Inactive}) {
        palette.setColor(group, QPalette::WindowText, color);
        palette.setColor(group, QPalette::ButtonText, color);
        palette.setColor(group, QPalette::Text, color);
    }
    palette.setColor(QPalette::Disabled, QPalette::WindowText, withAlpha(color, 0.5));
    widget.setPalette(palette);
}

} // namespace korvane
