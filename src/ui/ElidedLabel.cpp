#include "ui/ElidedLabel.h"

#include <QPainter>

namespace korvane {

ElidedLabel::ElidedLabel(QWidget* parent) : QLabel(parent) {
    setTextFormat(Qt::PlainText);
    setWordWrap(false);
}

QSize ElidedLabel::minimumSizeHint() const {
    return {fontMetrics().horizontalAdvance(QStringLiteral("M…")), QLabel::minimumSizeHint().height()};
}

void ElidedLabel::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setPen(
        palette().color(isEnabled() ? QPalette::Active : QPalette::Disabled, QPalette::WindowText));
    const QRect area = contentsRect();
    painter.drawText(area, Qt::AlignLeft | Qt::AlignVCenter,
                     fontMetrics().elidedText(text(), Qt::ElideRight, area.width()));
}

} // namespace korvane
