#pragma once

#include <QProxyStyle>

namespace korvane {

// The desktop's own style, with two things every control gets whatever that
// style does: a border that stands out 3:1 from the surface around it
// (WindowStyle::controlBorder), and a focus ring whenever the control has
// the keyboard focus, not only after the Tab key, so that Space never acts on
// a control the user can't see is focused.
class VisibleControlStyle : public QProxyStyle {
  public:
    // A push button with this property true is the window's primary action,
    // filled flat with its palette's Button colour.
    static constexpr const char* prominentProperty = "korvaneProminent";

    // Over `base`, or the desktop's default style when it is null; takes it.
    explicit VisibleControlStyle(QStyle* base = nullptr);

    void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                       const QWidget* widget = nullptr) const override;
    void drawComplexControl(ComplexControl control, const QStyleOptionComplex* option, QPainter* painter,
                            const QWidget* widget = nullptr) const override;

    // Makes it the application's style: over Fusion for the dark palette, a
    // style that follows the palette, else over the desktop's default.
    static void install(bool isDark);
};

} // namespace korvane
