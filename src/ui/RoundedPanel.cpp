#include "ui/RoundedPanel.h"

#include <QPainter>
#include <QPainterPath>

namespace korvane {

RoundedPanel::RoundedPanel(qreal radius, QWidget* parent) : QWidget(parent), radius_(radius) {}

void RoundedPanel::setFill(const QColor& fill) {
    if (fill_ != fill) {
        fill_ = fill;
        update();
    }
}

void RoundedPanel::setEdge(const QColor& edge, qreal width) {
    edge_ = edge;
    edgeWidth_ = width;
    update();
}

void RoundedPanel::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF area =
        QRectF(rect()).adjusted(edgeWidth_ / 2, edgeWidth_ / 2, -edgeWidth_ / 2, -edgeWidth_ / 2);
    const qreal radius = radius_ < 0 ? area.height() / 2 : radius_;
    QPainterPath shape;
    shape.addRoundedRect(area, radius, radius);
    painter.fillPath(shape, fill_);
    if (edgeWidth_ > 0 && edge_.alpha() > 0) {
        painter.setPen(QPen(edge_, edgeWidth_));
        painter.drawPath(shape);
    }
}

} // namespace korvane
