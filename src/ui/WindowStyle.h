#pragma once

#include <QColor>
#include <QFont>
#include <QPalette>

class QWidget;

namespace korvane {

// The window's type scale, named after the text styles of the design. Sizes
// are relative to the application font, so a desktop with larger fonts gets
// a larger window text throughout.
enum class TextStyle { title, headline, subheadline, callout, caption, caption2, generate };

enum class FontDesign { standard, monospaced };

// The colours the design names by role, taken from the palette so the window
// follows a light or a dark desktop.
//
// The port editor writes its texts in plain white, whatever the desktop's
// appearance. On a dark palette its surfaces are the palette's own; on a light
// one they are a fixed dark slate, since white text on a light surface would
// vanish.
class WindowStyle {
  public:
    explicit WindowStyle(const QPalette& palette);

    static QFont font(TextStyle style, QFont::Weight weight = QFont::Normal,
                      FontDesign design = FontDesign::standard);

    bool isDark() const { return isDark_; }
    QColor windowBackground() const;
    QColor panelBackground() const;
    QColor listBackground() const;
    QColor secondary(double opacity = 1.0) const;
    // Secondary text standing on the port editor's surfaces.
    QColor secondaryOnPanel(double opacity = 1.0) const;
    QColor divider() const;
    QColor thinMaterial() const;
    QColor materialEdge() const;
    QColor accent() const;
    QColor orange() const;
    // Warning text on the window background: an orange dark enough to read on
    // a light desktop.
    QColor warning() const;
    QColor green() const;
    static QColor white(double opacity = 1.0);

    // The palette of the port editor's controls: on a light desktop a dark
    // one, so buttons, menus and the scroll bar sit well on the dark surface.
    QPalette editorPalette() const;

    // Sets a widget's text colour (its WindowText and ButtonText roles).
    static void setTextColor(QWidget& widget, const QColor& color);

  private:
    QPalette palette_;
    bool isDark_;
};

} // namespace korvane
