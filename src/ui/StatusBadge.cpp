#include "ui/StatusBadge.h"

#include "ui/WindowStyle.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>

namespace korvane {

class StatusBadge::Dot : public QWidget {
  public:
    explicit Dot(QWidget* parent) : QWidget(parent) { setFixedSize(10, 10); }

    QColor color() const { return color_; }
    void setColor(const QColor& color) {
        color_ = color;
        update();
    }

  protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        painter.setBrush(color_);
        painter.drawEllipse(QRectF(rect()));
    }

  private:
    QColor color_;
};

StatusBadge::StatusBadge(QWidget* parent)
    : RoundedPanel(-1, parent), dot_(new Dot(this)), label_(new QLabel(this)) {
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(12, 8, 12, 8);
    layout->setSpacing(8);
    layout->addWidget(dot_);
    layout->addWidget(label_);
    label_->setFont(WindowStyle::font(TextStyle::callout, QFont::DemiBold));
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    setState(State::ready);
    applyColours();
}

void StatusBadge::setState(State state) {
    state_ = state;
    switch (state_) {
    case State::running:
        label_->setText("Running");
        break;
    case State::completed:
        label_->setText("Completed");
        break;
    case State::ready:
        label_->setText("Ready");
        break;
    case State::failed:
        label_->setText("Failed");
        break;
    }
    applyColours();
}

QString StatusBadge::text() const {
    return label_->text();
}

QColor StatusBadge::dotColor() const {
    return dot_->color();
}

void StatusBadge::applyColours() {
    const WindowStyle style(palette());
    setFill(style.thinMaterial());
    setEdge(style.materialEdge());
    switch (state_) {
    case State::running:
        dot_->setColor(style.orange());
        break;
    case State::completed:
        dot_->setColor(style.green());
        break;
    case State::ready:
        dot_->setColor(style.secondary());
        break;
    case State::failed:
        dot_->setColor(style.errorText());
        break;
    }
    label_->setPalette(palette());
    if (state_ == State::failed) {
        WindowStyle::setTextColor(*label_, style.errorText());
    }
}

void StatusBadge::changeEvent(QEvent* event) {
    if (event->type() == QEvent::PaletteChange) {
        applyColours();
    }
    RoundedPanel::changeEvent(event);
}

} // namespace korvane
