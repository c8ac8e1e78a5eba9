#include "ui/AnimatedHeaderIcon.h"

#include "ui/WindowStyle.h"

#include <QApplication>
#include <QFile>
#include <QPainter>
#include <QPainterPath>

namespace korvane {

namespace {

QPainterPath roundedSquare(const QRectF& area, qreal radius) {
    QPainterPath path;
    path.addRoundedRect(area, radius, radius);
    return path;
}

// A soft shadow without a blur effect: concentric strokes whose opacity falls
// off over the radius.
void paintShadow(QPainter& painter, const QRectF& area, qreal cornerRadius, QColor color, qreal blur,
                 QPointF offset) {
    const int steps = qMax(1, qRound(blur));
    const qreal peak = color.alphaF();
    painter.setBrush(Qt::NoBrush);
    for (int step = steps; step >= 1; --step) {
        const qreal spread = step;
        color.setAlphaF(static_cast<float>(peak * (1.0 - spread / (steps + 1)) / steps * 2));
        painter.setPen(QPen(color, 1.0));
        painter.drawPath(roundedSquare(area.translated(offset).adjusted(-spread, -spread, spread, spread),
                                       cornerRadius + spread));
    }
}

} // namespace

AnimatedHeaderIcon::AnimatedHeaderIcon(QIcon icon, QWidget* parent)
    : QWidget(parent), appIcon_(std::move(icon)) {
    setFixedSize(60, 60);
    setAccessibleName("KorvaneGenerator");
}

void AnimatedHeaderIcon::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
    const WindowStyle style(palette());
    const QPointF centre = QRectF(rect()).center();

    QColor accent = style.accent();
    const QRectF plate(centre.x() - 29, centre.y() - 29, 58, 58);
    accent.setAlphaF(0.18f);
    paintShadow(painter, plate, 18, accent, 8, {0, 2});
    painter.fillPath(roundedSquare(plate, 18), style.thinMaterial());
    painter.setPen(QPen(WindowStyle::white(0.18), 1.0));
    painter.drawPath(roundedSquare(plate.adjusted(0.5, 0.5, -0.5, -0.5), 18));

    if (appIcon_.isNull()) {
        return;
    }
    const QRectF iconArea(centre.x() - 24, centre.y() - 24, 48, 48);
    accent.setAlphaF(0.22f);
    paintShadow(painter, iconArea, 14, accent, 6, {0, 0});
    const QPixmap picture = appIcon_.pixmap(QSize(48, 48), devicePixelRatioF());
    painter.setClipPath(roundedSquare(iconArea, 14));
    painter.drawPixmap(iconArea, picture, QRectF(picture.rect()));
}

QIcon appIcon(const std::filesystem::path& resourceFolder) {
    for (const char* file : {"AppIcon.icns", "AppIcon.svg"}) {
        const QString path = QString::fromStdString((resourceFolder / file).string());
        if (QFile::exists(path)) {
            QIcon icon(path);
            if (!icon.pixmap(QSize(48, 48)).isNull()) {
                return icon;
            }
        }
    }
    if (QIcon::hasThemeIcon(applicationID)) {
        return QIcon::fromTheme(applicationID);
    }
    if (QFile::exists(":/korvane/AppIcon.svg")) {
        return QIcon(":/korvane/AppIcon.svg");
    }
    return QApplication::windowIcon();
}

} // namespace korvane
