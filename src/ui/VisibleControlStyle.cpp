#include "ui/VisibleControlStyle.h"

#include "ui/WindowStyle.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QPainter>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QStyleFactory>
#include <QStyleOption>

namespace korvane {

namespace {

constexpr qreal cornerRadius = 3;

void drawOutline(QPainter& painter, const QRect& area, const QColor& color, qreal width) {
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing, true);
    painter.setPen(QPen(color, width));
    painter.setBrush(Qt::NoBrush);
    const qreal inset = width / 2;
    painter.drawRoundedRect(QRectF(area).adjusted(inset, inset, -inset, -inset), cornerRadius, cornerRadius);
    painter.restore();
}

// The border of a control, or the focus ring in its place.
void drawControlEdge(QPainter& painter, const QStyleOption& option) {
    const WindowStyle style(option.palette);
    if (option.state & QStyle::State_HasFocus) {
        // On a fill of the accent colour (the primary action) the accent
        // ring would vanish; the button's text colour shows.
        QColor ring = style.focusRing();
        if (option.palette.color(QPalette::Button) == style.prominentFill()) {
            ring = option.palette.color(QPalette::ButtonText);
        }
        drawOutline(painter, option.rect, ring, 2);
        return;
    }
    QColor border = style.controlBorder();
    if (!(option.state & QStyle::State_Enabled)) {
        border.setAlphaF(0.45f);
    }
    drawOutline(painter, option.rect, border, 1);
}

// The primary action's fill, exactly the palette's button colour: a style's
// shading would lighten it under the white text.
void drawProminentPanel(QPainter& painter, const QStyleOption& option) {
    QColor fill = option.palette.color(QPalette::Button);
    if (option.state & QStyle::State_Sunken) {
        fill = fill.darker(115);
    } else if (!(option.state & QStyle::State_Enabled)) {
        fill = option.palette.color(QPalette::Disabled, QPalette::Button);
    }
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing, true);
    painter.setPen(Qt::NoPen);
    painter.setBrush(fill);
    painter.drawRoundedRect(QRectF(option.rect), cornerRadius, cornerRadius);
    painter.restore();
}

// Controls whose own edge carries their focus ring.
bool drawsItsOwnFocus(const QWidget* widget) {
    return qobject_cast<const QPushButton*>(widget) || qobject_cast<const QCheckBox*>(widget) ||
           qobject_cast<const QComboBox*>(widget);
}

} // namespace

VisibleControlStyle::VisibleControlStyle(QStyle* base) : QProxyStyle(base) {}

void VisibleControlStyle::drawPrimitive(PrimitiveElement element, const QStyleOption* option,
                                        QPainter* painter, const QWidget* widget) const {
    switch (element) {
    case PE_PanelButtonCommand:
        if (widget && widget->property(prominentProperty).toBool()) {
            drawProminentPanel(*painter, *option);
            drawControlEdge(*painter, *option);
            return;
        }
        [[fallthrough]];
    case PE_IndicatorCheckBox:
    case PE_FrameLineEdit:
        QProxyStyle::drawPrimitive(element, option, painter, widget);
        drawControlEdge(*painter, *option);
        return;
    case PE_Frame:
        // A text view's frame is its border: the log panel's.
        QProxyStyle::drawPrimitive(element, option, painter, widget);
        if (qobject_cast<const QPlainTextEdit*>(widget)) {
            drawControlEdge(*painter, *option);
        }
        return;
    case PE_FrameFocusRect:
        if (!drawsItsOwnFocus(widget)) {
            drawOutline(*painter, option->rect, WindowStyle(option->palette).focusRing(), 2);
        }
        return;
    default:
        QProxyStyle::drawPrimitive(element, option, painter, widget);
    }
}

void VisibleControlStyle::drawComplexControl(ComplexControl control, const QStyleOptionComplex* option,
                                             QPainter* painter, const QWidget* widget) const {
    QProxyStyle::drawComplexControl(control, option, painter, widget);
    if (control == CC_ComboBox) {
        drawControlEdge(*painter, *option);
    }
}

void VisibleControlStyle::install(bool isDark) {
    QApplication::setStyle(new VisibleControlStyle(isDark ? QStyleFactory::create("Fusion") : nullptr));
    if (isDark) {
        QApplication::setPalette(WindowStyle::darkPalette());
    }
}

} // namespace korvane
