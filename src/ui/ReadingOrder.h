#pragma once

#include <QWidget>
#include <vector>

namespace korvane {

// The controls below `root` that take the keyboard focus by Tab, in the order
// a reader meets them: the layouts' own order, top to bottom and left to
// right, into scroll areas and stacked pages. Hidden and disabled controls are
// listed too (Tab skips them by itself), so the order needn't be made again
// when they show. A control added to any layout later takes its place in it.
std::vector<QWidget*> controlsInReadingOrder(QWidget& root);

// Chains the focus through `controls` in that order.
void chainTabOrder(const std::vector<QWidget*>& controls);

} // namespace korvane
