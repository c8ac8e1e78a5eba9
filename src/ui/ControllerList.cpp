#include "ui/ControllerList.h"

#include "ui/ControllerSection.h"

#include <QVBoxLayout>

namespace korvane {

ControllerList::ControllerList(std::shared_ptr<CollectorModel> model, QWidget* parent)
    : QScrollArea(parent), model_(std::move(model)), content_(new QWidget),
      stack_(new QVBoxLayout(content_)) {
    setFrameShape(QFrame::NoFrame);
    // A section's header and a row stay in sight however small the window.
    setMinimumHeight(88);
    // The rows take the focus; the list scrolls to show the one that has it.
    setFocusPolicy(Qt::NoFocus);
    setWidgetResizable(true);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    viewport()->setAutoFillBackground(false);
    content_->setAutoFillBackground(false);
    stack_->setContentsMargins(0, 0, 0, 0);
    stack_->setSpacing(8);
    stack_->addStretch(1);
    setWidget(content_);
    // setWidget paints the content's background; the sections carry their own.
    content_->setAutoFillBackground(false);
}

void ControllerList::showControllers(const std::vector<USBControllerMap>& controllers,
                                     const std::set<std::string>& openKeys) {
    // One repaint for the whole change, after everything is in place.
    content_->setUpdatesEnabled(false);
    std::vector<std::string> order;
    order.reserve(controllers.size());
    std::map<std::string, ControllerSection*> kept;
    for (const auto& controller : controllers) {
        std::string key = controller.stableID();
        if (kept.contains(key)) {
            continue; // the scanner drops duplicate controllers; a section per key
        }
        ControllerSection* section = nullptr;
        if (auto found = sectionsByKey_.find(key); found != sectionsByKey_.end()) {
            section = found->second;
            sectionsByKey_.erase(found);
        } else {
            section = new ControllerSection(model_, content_);
            section->setFill(sectionBackground_);
            connect(section->header(), &QAbstractButton::clicked, this, [this, key] {
                if (onToggle) {
                    onToggle(key);
                }
            });
        }
        section->showController(controller, openKeys.contains(key));
        const int position = static_cast<int>(order.size());
        if (stack_->indexOf(section) != position) {
            stack_->removeWidget(section);
            stack_->insertWidget(position, section);
        }
        kept.emplace(key, section);
        order.push_back(std::move(key));
    }
    for (auto& [key, section] : sectionsByKey_) {
        delete section;
    }
    sectionsByKey_ = std::move(kept);
    content_->setUpdatesEnabled(true);
}

void ControllerList::refreshRows() {
    for (const auto& [key, section] : sectionsByKey_) {
        section->refreshRows();
    }
}

void ControllerList::setSectionBackground(const QColor& color) {
    sectionBackground_ = color;
    for (const auto& [key, section] : sectionsByKey_) {
        section->setFill(color);
    }
}

std::vector<ControllerSection*> ControllerList::sections() const {
    std::vector<ControllerSection*> sections;
    for (int index = 0; index < stack_->count(); ++index) {
        if (auto* section = dynamic_cast<ControllerSection*>(stack_->itemAt(index)->widget())) {
            sections.push_back(section);
        }
    }
    return sections;
}

} // namespace korvane
