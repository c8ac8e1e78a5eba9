#pragma once

#include <QColor>

namespace korvane {

// WCAG 2 contrast. Text needs 4.5:1 against what it stands on, the borders
// and focus rings that make a control visible 3:1.
constexpr double textContrastMinimum = 4.5;
constexpr double borderContrastMinimum = 3.0;

// The relative luminance of an sRGB colour, 0 for black to 1 for white; the
// alpha channel is ignored.
double relativeLuminance(const QColor& color);

// The ratio, 1 to 21, of `foreground` painted with its alpha over the opaque
// `background`, against that background.
double contrastRatio(const QColor& foreground, const QColor& background);

// `foreground` painted with its alpha over the opaque `background`.
QColor composited(const QColor& foreground, const QColor& background);

} // namespace korvane
