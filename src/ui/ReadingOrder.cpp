#include "ui/ReadingOrder.h"

#include <QLayout>
#include <QScrollArea>
#include <QStackedWidget>

namespace korvane {

namespace {

void collectLayout(const QLayout& layout, std::vector<QWidget*>& controls);

void collectWidget(QWidget& widget, std::vector<QWidget*>& controls) {
    if (widget.focusPolicy() & Qt::TabFocus) {
        // A control's inner parts (a combo box's field) follow it by themselves.
        controls.push_back(&widget);
        return;
    }
    if (auto* scroll = qobject_cast<QScrollArea*>(&widget); scroll && scroll->widget()) {
        collectWidget(*scroll->widget(), controls);
    } else if (auto* stack = qobject_cast<QStackedWidget*>(&widget)) {
        for (int index = 0; index < stack->count(); ++index) {
            collectWidget(*stack->widget(index), controls);
        }
    } else if (widget.layout()) {
        collectLayout(*widget.layout(), controls);
    }
}

void collectLayout(const QLayout& layout, std::vector<QWidget*>& controls) {
    for (int index = 0; index < layout.count(); ++index) {
        QLayoutItem* item = layout.itemAt(index);
        if (QWidget* widget = item->widget()) {
            collectWidget(*widget, controls);
        } else if (const QLayout* inner = item->layout()) {
            collectLayout(*inner, controls);
        }
    }
}

} // namespace

std::vector<QWidget*> controlsInReadingOrder(QWidget& root) {
    std::vector<QWidget*> controls;
    if (root.layout()) {
        collectLayout(*root.layout(), controls);
    }
    return controls;
}

void chainTabOrder(const std::vector<QWidget*>& controls) {
    for (std::size_t index = 1; index < controls.size(); ++index) {
        QWidget::setTabOrder(controls[index - 1], controls[index]);
    }
}

} // namespace korvane
