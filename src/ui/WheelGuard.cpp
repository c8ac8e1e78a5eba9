#include "ui/WheelGuard.h"

#include <QAbstractScrollArea>
#include <QApplication>
#include <QEvent>
#include <QWidget>

namespace korvane {

namespace {

class WheelGuard : public QObject {
  public:
    explicit WheelGuard(QWidget& control) : QObject(&control), control_(control) {}

  protected:
    bool eventFilter(QObject*, QEvent* event) override {
        if (event->type() != QEvent::Wheel) {
            return false;
        }
        const QWidget* focused = QApplication::focusWidget();
        if (focused && (focused == &control_ || control_.isAncestorOf(focused))) {
            return false;
        }
        // Straight to the scroll area around it: left to propagate, the event
        // stops at the first parent that takes wheels, and Qt passes on only
        // some events of a wheel's stream.
        for (QWidget* parent = control_.parentWidget(); parent; parent = parent->parentWidget()) {
            if (auto* area = qobject_cast<QAbstractScrollArea*>(parent)) {
                QCoreApplication::sendEvent(area->viewport(), event);
                return true;
            }
        }
        return true;
    }

  private:
    QWidget& control_;
};

} // namespace

void guardWheel(QWidget& control) {
    // Not WheelFocus: a wheel turned over the control must not give it the
    // focus on the way.
    control.setFocusPolicy(Qt::StrongFocus);
    control.installEventFilter(new WheelGuard(control));
}

} // namespace korvane
