#include "ui/SymbolIcons.h"

#include <QFile>
#include <QIconEngine>
#include <QPainter>
#include <map>

namespace korvane {

namespace {

const std::map<QString, QStringList>& themeTable() {
    // Symbolic icons first: they are one-colour shapes like the design's.
    static const std::map<QString, QStringList> table = {
        {"arrow.clockwise", {"view-refresh-symbolic", "view-refresh"}},
        {"arrow.down.doc.fill", {"document-save-symbolic", "document-save"}},
        {"externaldrive.connected.to.line.below.fill",
         {"drive-removable-media-symbolic", "drive-removable-media"}},
        {"folder.fill", {"folder-symbolic", "folder"}},
        {"heart.fill", {"emblem-favorite-symbolic", "emblem-favorite"}},
        {"chevron.down", {"pan-down-symbolic", "go-down"}},
        {"chevron.right", {"pan-end-symbolic", "go-next"}},
    };
    return table;
}

QIcon sourceIcon(const QString& symbol) {
    for (const QString& name : SymbolIcons::themeNames(symbol)) {
        if (QIcon::hasThemeIcon(name)) {
            return QIcon::fromTheme(name);
        }
    }
    const QString bundled = ":/korvane/symbols/" + symbol + ".svg";
    return QFile::exists(bundled) ? QIcon(bundled) : QIcon();
}

// Paints the glyph at the exact size and scale asked for, so a button's icon
// stays as large as the button at any QT_SCALE_FACTOR: a fixed set of
// pixmaps was drawn at the wrong scale there and shrank into a corner.
class TintedSymbolEngine final : public QIconEngine {
  public:
    TintedSymbolEngine(QIcon source, QColor color, QColor disabledColor)
        : source_(std::move(source)), color_(std::move(color)), disabledColor_(std::move(disabledColor)) {}

    void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State state) override {
        const qreal scale = painter->device() ? painter->device()->devicePixelRatioF() : 1.0;
        // In device pixels, so that the glyph is drawn sharp, not stretched.
        QPixmap glyph = scaledPixmap(rect.size() * scale, mode, state, scale);
        painter->drawPixmap(rect, glyph);
    }

    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override {
        return scaledPixmap(size, mode, state, 1.0);
    }

    // `size` is in device pixels here, as QIcon::pixmap asks for it.
    QPixmap scaledPixmap(const QSize& size, QIcon::Mode mode, QIcon::State, qreal) override {
        return tinted(source_, size, mode == QIcon::Disabled ? disabledColor_ : color_);
    }

    QSize actualSize(const QSize& size, QIcon::Mode, QIcon::State) override { return size; }
    QIconEngine* clone() const override { return new TintedSymbolEngine(source_, color_, disabledColor_); }
    QString key() const override { return "korvane-tinted-symbol"; }
    bool isNull() override { return source_.isNull(); }

    // The source's shape at `size` pixels, every painted pixel in `color`.
    static QPixmap tinted(const QIcon& source, const QSize& size, const QColor& color) {
        QPixmap glyph = source.pixmap(size, 1.0);
        if (glyph.isNull()) {
            return {};
        }
        QPixmap result(size);
        result.fill(Qt::transparent);
        QPainter painter(&result);
        // Centred: a theme may hand back a smaller glyph than asked.
        const QSize shown = glyph.size().scaled(size, Qt::KeepAspectRatio);
        painter.drawPixmap(
            QRect(QPoint((size.width() - shown.width()) / 2, (size.height() - shown.height()) / 2), shown),
            glyph);
        painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
        painter.fillRect(result.rect(), color);
        return result;
    }

  private:
    QIcon source_;
    QColor color_;
    QColor disabledColor_;
};

} // namespace

QStringList SymbolIcons::themeNames(const QString& symbol) {
    const auto found = themeTable().find(symbol);
    return found != themeTable().end() ? found->second : QStringList{};
}

QPixmap SymbolIcons::pixmap(const QString& symbol, int size, const QColor& color, qreal devicePixelRatio) {
    const int pixels = qRound(size * devicePixelRatio);
    QPixmap glyph = TintedSymbolEngine::tinted(sourceIcon(symbol), QSize(pixels, pixels), color);
    glyph.setDevicePixelRatio(devicePixelRatio);
    return glyph;
}

QIcon SymbolIcons::icon(const QString& symbol, const QColor& color, const QColor& disabledColor) {
    QIcon source = sourceIcon(symbol);
    if (source.isNull()) {
        return {};
    }
    return QIcon(new TintedSymbolEngine(std::move(source), color, disabledColor));
}

} // namespace korvane
