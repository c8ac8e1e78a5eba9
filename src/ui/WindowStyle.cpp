#include "ui/WindowStyle.h"

#include "ui/Contrast.h"

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
    font.setPointSizeF(std::max(minimumPointSize, body * designSize(style) / 13.0));
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

QColor WindowStyle::secondary() const {
    return withAlpha(palette_.color(QPalette::WindowText), 0.65);
}

QColor WindowStyle::secondaryOnPanel() const {
    return isDark_ ? secondary() : white(0.62);
}

QColor WindowStyle::errorText() const {
    return isDark_ ? QColor(0xff, 0x8a, 0x80) : QColor(0xb3, 0x26, 0x1e);
}

QColor WindowStyle::controlBorder() const {
    return composited(withAlpha(palette_.color(QPalette::WindowText), 0.55), windowBackground());
}

QColor WindowStyle::focusRing() const {
    const QColor accent = palette_.color(QPalette::Highlight);
    // A theme's accent can be too faint on its own window; its text colour never is.
    return contrastRatio(accent, windowBackground()) >= borderContrastMinimum
               ? accent
               : palette_.color(QPalette::WindowText);
}

QColor WindowStyle::prominentFill() const {
    QColor fill = accent();
    const QColor text = palette_.color(QPalette::HighlightedText);
    for (int step = 0; step < 20 && contrastRatio(text, fill) < textContrastMinimum; ++step) {
        fill = relativeLuminance(text) > 0.5 ? fill.darker(110) : fill.lighter(110);
    }
    return fill;
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

QPalette WindowStyle::darkPalette() {
    QPalette palette;
    palette.setColor(QPalette::Window, QColor(0x26, 0x27, 0x2b));
    palette.setColor(QPalette::WindowText, QColor(0xe8, 0xe8, 0xea));
    palette.setColor(QPalette::Base, QColor(0x1c, 0x1d, 0x20));
    palette.setColor(QPalette::AlternateBase, QColor(0x2c, 0x2d, 0x31));
    palette.setColor(QPalette::Text, QColor(0xe8, 0xe8, 0xea));
    palette.setColor(QPalette::Button, QColor(0x3a, 0x3b, 0x40));
    palette.setColor(QPalette::ButtonText, QColor(0xf0, 0xf0, 0xf2));
    palette.setColor(QPalette::Highlight, QColor(0x2f, 0x6f, 0xe4));
    palette.setColor(QPalette::HighlightedText, Qt::white);
    palette.setColor(QPalette::ToolTipBase, QColor(0x2c, 0x2d, 0x31));
    palette.setColor(QPalette::ToolTipText, QColor(0xe8, 0xe8, 0xea));
    palette.setColor(QPalette::PlaceholderText, QColor(0x8e, 0x8e, 0x93));
    for (auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText}) {
        palette.setColor(QPalette::Disabled, role, QColor(0x7a, 0x7a, 0x80));
    }
    palette.setColor(QPalette::Disabled, QPalette::Button, QColor(0x30, 0x31, 0x35));
    return palette;
}

std::vector<WindowStyle::ContrastPair> WindowStyle::contrastPairs() const {
    const QColor window = windowBackground();
    const QColor badge = composited(thinMaterial(), window);
    const QColor panel = panelBackground();
    const QColor list = listBackground();
    const WindowStyle editor(editorPalette());
    auto role = [](const QPalette& palette, QPalette::ColorRole which) { return palette.color(which); };
    const double text = textContrastMinimum;
    const double border = borderContrastMinimum;
    std::vector<ContrastPair> pairs = {
        {"title", role(palette_, QPalette::WindowText), window, text},
        {"secondary text", secondary(), window, text},
        {"error text", errorText(), window, text},
        {"warning text", warning(), window, text},
        {"badge", role(palette_, QPalette::WindowText), badge, text},
        {"button text", role(palette_, QPalette::ButtonText), role(palette_, QPalette::Button), text},
        {"primary action", role(palette_, QPalette::HighlightedText), prominentFill(), text},
        {"log text", role(palette_, QPalette::Text), role(palette_, QPalette::Base), text},
        {"editor title", white(), panel, text},
        {"editor secondary", secondaryOnPanel(), panel, text},
        {"list secondary", secondaryOnPanel(), list, text},
        {"editor button text", role(editor.palette_, QPalette::ButtonText),
         role(editor.palette_, QPalette::Button), text},
        {"control border", controlBorder(), window, border},
        {"focus ring", focusRing(), window, border},
        {"editor control border", editor.controlBorder(), panel, border},
        {"row control border", editor.controlBorder(), list, border},
        {"editor focus ring", editor.focusRing(), panel, border},
        {"row focus ring", editor.focusRing(), list, border},
    };
    for (const auto& [what, opacity] : {std::pair{"controller identity", identityOpacity},
                                        {"database name", databaseNameOpacity},
                                        {"port number", portNumberOpacity},
                                        {"no active device", noDeviceOpacity}}) {
        pairs.push_back({what, white(opacity), list, text});
    }
    return pairs;
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
