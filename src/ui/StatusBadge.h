#pragma once

#include "ui/RoundedPanel.h"

class QLabel;

namespace korvane {

// The run status at the right of the header: a coloured dot and a word on a
// translucent capsule. A failed run reads in the error colour, word and dot.
class StatusBadge : public RoundedPanel {
  public:
    enum class State { ready, running, completed, failed };

    explicit StatusBadge(QWidget* parent = nullptr);

    void setState(State state);
    State state() const { return state_; }
    QString text() const;
    QColor dotColor() const;

  protected:
    void changeEvent(QEvent* event) override;

  private:
    class Dot;

    void applyColours();

    State state_ = State::ready;
    Dot* dot_;
    QLabel* label_;
};

} // namespace korvane
