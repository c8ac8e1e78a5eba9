#pragma once

#include "collector/CollectorModel.h"

#include <QString>
#include <QWidget>
#include <memory>

class QComboBox;
class QLabel;

namespace korvane {

// "Target Mac model" in the action row: an editable list of the models
// people give their machines as SMBIOS, and a word on where the model in
// force comes from. What is typed is the model's choice at once; an empty
// field means not chosen, and the placeholder shows what a run would use.
class TargetModelField : public QWidget {
  public:
    explicit TargetModelField(std::shared_ptr<CollectorModel> model, QWidget* parent = nullptr);

    // Re-reads the choice and the machine's model.
    void refresh();
    // A model chosen for another machine: first in the list, and named
    // beside the source while nothing is chosen here. Empty: none.
    void setOffer(const QString& model);

    QComboBox* menu() const { return menu_; }
    QLabel* sourceLabel() const { return source_; }

  private:
    std::shared_ptr<CollectorModel> model_;
    QComboBox* menu_;
    QLabel* source_;
    QString offer_;
};

// The warning that stands below the action row for this model, or "".
QString targetModelWarning(const CollectorModel& model);

} // namespace korvane
