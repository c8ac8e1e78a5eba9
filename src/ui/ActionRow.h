#pragma once

#include "collector/CollectorModel.h"

#include <QString>
#include <QWidget>
#include <memory>

class QLabel;
class QPushButton;

namespace korvane {

class ElidedLabel;
class TargetModelField;

// The band under the port editor: Generate Korvane.kext, Open ZIP, the target
// Mac model and where the ZIP goes, with the notes that stand under them (the
// target model's warning, the merge personalities' notes). Every control
// calls the model and every text reads it.
class ActionRow : public QWidget {
  public:
    explicit ActionRow(std::shared_ptr<CollectorModel> model, QWidget* parent = nullptr);

    // Re-reads the model; `settingsProblem` joins the target model's warning.
    // A `nothingToWrite` reason disables Generate and stands under it.
    void refresh(const QString& settingsProblem, const QString& nothingToWrite);

    QPushButton* generate() const { return generate_; }
    QPushButton* openZip() const { return openZip_; }
    QPushButton* mapByPlugging() const { return mapByPlugging_; }
    TargetModelField* targetModel() const { return targetModel_; }
    ElidedLabel* output() const { return output_; }
    QLabel* targetModelWarning() const { return targetModelWarning_; }
    QLabel* personalityNotes() const { return personalityNotes_; }
    QLabel* generateReason() const { return generateReason_; }

  private:
    std::shared_ptr<CollectorModel> model_;
    QPushButton* generate_;
    QPushButton* openZip_;
    QPushButton* mapByPlugging_;
    TargetModelField* targetModel_;
    ElidedLabel* output_;
    QLabel* targetModelWarning_;
    QLabel* personalityNotes_;
    QLabel* generateReason_;
};

} // namespace korvane
