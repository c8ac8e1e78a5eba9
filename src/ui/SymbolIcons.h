#pragma once

#include <QColor>
#include <QIcon>
#include <QPixmap>
#include <QString>

namespace korvane {

// The design's symbols ("arrow.clockwise", "folder.fill"...) as one-colour
// glyphs: the desktop's icon theme when it has a matching symbolic icon, else
// the SVG bundled with the program, so the window looks the same on a desktop
// without an icon theme. Either way the glyph is painted in the colour asked
// for, as the design colours its symbols like text.
class SymbolIcons {
  public:
    // An unknown name gives a null pixmap.
    static QPixmap pixmap(const QString& symbol, int size, const QColor& color, qreal devicePixelRatio = 2.0);

    // For buttons: `color` when enabled, `disabledColor` when not; drawn afresh
    // at whatever size and screen scale the button asks for.
    static QIcon icon(const QString& symbol, const QColor& color, const QColor& disabledColor);

    // The theme names tried for a symbol, best first; empty for an unknown one.
    static QStringList themeNames(const QString& symbol);
};

} // namespace korvane
