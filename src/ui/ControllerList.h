#pragma once

#include "collector/CollectorModel.h"

#include <QScrollArea>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

class QVBoxLayout;

namespace korvane {

class ControllerSection;

// The scrolling stack of controller sections. A section is known by its
// controller's stableID, so a rescan updates the sections and rows that are
// already there in place: nothing is rebuilt, nothing flickers, the scroll
// position stays and nothing is animated.
class ControllerList : public QScrollArea {
  public:
    explicit ControllerList(std::shared_ptr<CollectorModel> model, QWidget* parent = nullptr);

    // Shows `controllers` in order, each open when its key is in `openKeys`.
    void showControllers(const std::vector<USBControllerMap>& controllers,
                         const std::set<std::string>& openKeys);
    // Re-reads the check marks and connectors of the open rows.
    void refreshRows();

    void setSectionBackground(const QColor& color);
    // Called with a controller's stableID when its header is clicked.
    std::function<void(const std::string&)> onToggle;

    std::vector<ControllerSection*> sections() const;

  private:
    std::shared_ptr<CollectorModel> model_;
    QWidget* content_;
    QVBoxLayout* stack_;
    std::map<std::string, ControllerSection*> sectionsByKey_;
    QColor sectionBackground_;
};

} // namespace korvane
