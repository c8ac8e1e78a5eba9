#include "ui/WheelGuard.h"

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
        // Ignored, not eaten: the application hands it to the parents, up to
        // the scroll area.
        event->ignore();
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
