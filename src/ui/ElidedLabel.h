#pragma once

#include <QLabel>

namespace korvane {

// A one-line label that keeps its natural width while there is room and ends
// in an ellipsis when the window is too narrow for it, instead of widening
// the row past the visible area.
class ElidedLabel : public QLabel {
  public:
    explicit ElidedLabel(QWidget* parent = nullptr);

    QSize minimumSizeHint() const override;

  protected:
    void paintEvent(QPaintEvent* event) override;
};

} // namespace korvane
