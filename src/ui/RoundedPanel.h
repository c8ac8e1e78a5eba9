#pragma once

#include <QColor>
#include <QWidget>

namespace korvane {

// A plain container painted as a filled rounded rectangle, optionally with a
// hairline edge. A negative radius makes a capsule (half the height).
class RoundedPanel : public QWidget {
  public:
    explicit RoundedPanel(qreal radius, QWidget* parent = nullptr);

    void setFill(const QColor& fill);
    void setEdge(const QColor& edge, qreal width = 1.0);
    QColor fill() const { return fill_; }

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    qreal radius_;
    QColor fill_;
    QColor edge_ = Qt::transparent;
    qreal edgeWidth_ = 0;
};

} // namespace korvane
