#include "ui/Contrast.h"

#include <algorithm>
#include <cmath>

namespace korvane {

namespace {

double linearChannel(double channel) {
    return channel <= 0.04045 ? channel / 12.92 : std::pow((channel + 0.055) / 1.055, 2.4);
}

} // namespace

double relativeLuminance(const QColor& color) {
    const QColor rgb = color.toRgb();
    return 0.2126 * linearChannel(rgb.redF()) + 0.7152 * linearChannel(rgb.greenF()) +
           0.0722 * linearChannel(rgb.blueF());
}

QColor composited(const QColor& foreground, const QColor& background) {
    const QColor top = foreground.toRgb();
    const QColor bottom = background.toRgb();
    const double alpha = top.alphaF();
    auto mix = [alpha](double over, double under) { return over * alpha + under * (1.0 - alpha); };
    return QColor::fromRgbF(static_cast<float>(mix(top.redF(), bottom.redF())),
                            static_cast<float>(mix(top.greenF(), bottom.greenF())),
                            static_cast<float>(mix(top.blueF(), bottom.blueF())));
}

double contrastRatio(const QColor& foreground, const QColor& background) {
    const double front = relativeLuminance(composited(foreground, background));
    const double back = relativeLuminance(background);
    return (std::max(front, back) + 0.05) / (std::min(front, back) + 0.05);
}

} // namespace korvane
