#pragma once

#include <QColor>
#include <QFont>
#include <QPalette>
#include <QString>
#include <vector>

class QWidget;

namespace korvane {

// The window's type scale, named after the text styles of the design. Sizes
// are relative to the application font, so a desktop with larger fonts gets
// a larger window text throughout; none is smaller than 9 points.
enum class TextStyle { title, headline, subheadline, callout, caption, caption2, generate };

enum class FontDesign { standard, monospaced };

// The colours the design names by role, taken from the palette so the window
// follows a light or a dark desktop. Every text meets WCAG AA (4.5:1) against
// what it stands on, and every control border and focus ring 3:1;
// contrastPairs() lists them for the check.
//
// The port editor writes its texts in plain white, whatever the desktop's
// appearance. On a dark palette its surfaces are the palette's own; on a light
// one they are a fixed dark slate, since white text on a light surface would
// vanish.
class WindowStyle {
  public:
    explicit WindowStyle(const QPalette& palette);

    static constexpr double minimumPointSize = 9;
    static QFont font(TextStyle style, QFont::Weight weight = QFont::Normal,
                      FontDesign design = FontDesign::standard);

    // The opacities of the port editor's white texts.
    static constexpr double identityOpacity = 0.82;
    static constexpr double databaseNameOpacity = 0.72;
    static constexpr double portNumberOpacity = 0.65;
    static constexpr double noDeviceOpacity = 0.55;

    // The palette of --dark, for a desktop whose own palette is light or none.
    static QPalette darkPalette();

    bool isDark() const { return isDark_; }
    QColor windowBackground() const;
    QColor panelBackground() const;
    QColor listBackground() const;
    QColor secondary() const;
    // Secondary text standing on the port editor's surfaces.
    QColor secondaryOnPanel() const;
    // A failure's words: the run's ERROR line and its kin.
    QColor errorText() const;
    // What outlines a control (button, checkbox, menu, field) on this
    // palette's surfaces, and what rings the one with the keyboard focus.
    QColor controlBorder() const;
    QColor focusRing() const;
    // The fill of the window's primary action, under HighlightedText.
    QColor prominentFill() const;
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

    // A colour the window paints over another, and the contrast it needs.
    struct ContrastPair {
        QString what;
        QColor foreground;
        QColor background;
        double minimum;
    };
    // Every text and border colour of the window against its background.
    std::vector<ContrastPair> contrastPairs() const;

  private:
    QPalette palette_;
    bool isDark_;
};

} // namespace korvane
