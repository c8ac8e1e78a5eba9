#include "ui/SymbolIcons.h"

#include <QFile>
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

} // namespace

QStringList SymbolIcons::themeNames(const QString& symbol) {
    const auto found = themeTable().find(symbol);
    return found != themeTable().end() ? found->second : QStringList{};
}

QPixmap SymbolIcons::pixmap(const QString& symbol, int size, const QColor& color, qreal devicePixelRatio) {
    const QIcon source = sourceIcon(symbol);
    if (source.isNull()) {
        return {};
    }
    const int pixels = qRound(size * devicePixelRatio);
    QPixmap glyph = source.pixmap(QSize(pixels, pixels));
    if (glyph.isNull()) {
        return {};
    }
    QPixmap tinted(glyph.size());
    tinted.fill(Qt::transparent);
    QPainter painter(&tinted);
    painter.drawPixmap(0, 0, glyph);
    painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
    painter.fillRect(tinted.rect(), color);
    painter.end();
    tinted.setDevicePixelRatio(devicePixelRatio);
    return tinted;
}

QIcon SymbolIcons::icon(const QString& symbol, const QColor& color, const QColor& disabledColor, int size) {
    QIcon icon;
    const QPixmap normal = pixmap(symbol, size, color);
    if (normal.isNull()) {
        return icon;
    }
    icon.addPixmap(normal, QIcon::Normal);
    icon.addPixmap(normal, QIcon::Active);
    icon.addPixmap(pixmap(symbol, size, disabledColor), QIcon::Disabled);
    return icon;
}

} // namespace korvane
