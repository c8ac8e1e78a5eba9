#include "ui/ActionRow.h"

#include "collector/PortBudget.h"
#include "ui/ElidedLabel.h"
#include "ui/TargetModelField.h"
#include "ui/VisibleControlStyle.h"
#include "ui/WindowStyle.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QVBoxLayout>

namespace korvane {

namespace {

// A label that stands only while it has something to say.
void setShownText(QLabel& label, const QString& text) {
    if (label.text() != text) {
        label.setText(text);
    }
    label.setVisible(!text.isEmpty());
}

QLabel* noteLine() {
    auto* label = new QLabel;
    label->setFont(WindowStyle::font(TextStyle::caption));
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    label->hide();
    return label;
}

// Asks before a run that writes more ports on a controller than macOS uses:
// the sockets past the fifteenth would stay dead.
bool mayGenerateOverLimit(const CollectorModel& model, QWidget* parent) {
    QStringList over;
    const auto selected = model.selectedPortIDs();
    for (const auto& controller : model.scannedControllers()) {
        if (const PortBudget budget = portBudget(controller, selected); budget.isOverLimit()) {
            over << QString::fromStdString(overLimitText(budget) + ".");
        }
    }
    if (over.isEmpty()) {
        return true;
    }
    QMessageBox box(QMessageBox::Warning, "More than 15 ports",
                    over.join("\n") + "\n\nSockets past the fifteenth would not work. Check at most 15 "
                                      "ports of each controller, or generate anyway.",
                    QMessageBox::NoButton, parent);
    QPushButton* anyway = box.addButton("Generate &anyway", QMessageBox::AcceptRole);
    box.setDefaultButton(box.addButton("&Cancel", QMessageBox::RejectRole));
    box.exec();
    return box.clickedButton() == anyway;
}

} // namespace

ActionRow::ActionRow(std::shared_ptr<CollectorModel> model, QWidget* parent)
    : QWidget(parent), model_(std::move(model)), generate_(new QPushButton("&Generate Korvane.kext")),
      openZip_(new QPushButton("&Open ZIP")), mapByPlugging_(new QPushButton("Map by &plugging")),
      targetModel_(new TargetModelField(model_)), output_(new ElidedLabel), targetModelWarning_(noteLine()),
      personalityNotes_(noteLine()), generateReason_(noteLine()) {
    auto* area = new QVBoxLayout(this);
    area->setContentsMargins(0, 0, 0, 0);
    area->setSpacing(6);
    auto* row = new QHBoxLayout;
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(12);
    area->addLayout(row);

    generate_->setFont(WindowStyle::font(TextStyle::generate, QFont::DemiBold));
    generate_->setMinimumWidth(245);
    generate_->setMinimumHeight(34);
    // Not a default button: a window has no Enter action, and the style's
    // default look would lighten the fill under its white text.
    generate_->setAutoDefault(false);
    generate_->setProperty(VisibleControlStyle::prominentProperty, true);
    generate_->setIconSize(QSize(18, 18));
    row->addWidget(generate_);

    openZip_->setMinimumHeight(34);
    openZip_->setAutoDefault(false);
    row->addWidget(openZip_);
    mapByPlugging_->setMinimumHeight(34);
    mapByPlugging_->setAutoDefault(false);
    row->addWidget(mapByPlugging_);
    row->addSpacing(4);
    row->addWidget(targetModel_);
    row->addStretch(1);

    // The one text of the row that may give way when the window is narrow.
    output_->setText("Output: ~/Desktop/Korvane.zip");
    output_->setFont(WindowStyle::font(TextStyle::caption, QFont::Normal, FontDesign::monospaced));
    row->addWidget(output_);

    // Right under the button it explains.
    area->addWidget(generateReason_);
    area->addWidget(targetModelWarning_);
    area->addWidget(personalityNotes_);

    connect(generate_, &QPushButton::clicked, this, [this] {
        if (mayGenerateOverLimit(*model_, this)) {
            model_->startCollection();
        }
    });
    connect(openZip_, &QPushButton::clicked, this, [this] { model_->openDesktopZip(); });
}

void ActionRow::refresh(const QString& settingsProblem, const QString& nothingToWrite) {
    const CollectorModel& model = *model_;
    generate_->setEnabled(!model.isRunning() && nothingToWrite.isEmpty());
    setShownText(*generateReason_, nothingToWrite);
    generate_->setAccessibleDescription(nothingToWrite);
    openZip_->setEnabled(model.lastZipURL().has_value() && !model.isRunning());

    targetModel_->refresh();
    QString warning = korvane::targetModelWarning(model);
    if (!settingsProblem.isEmpty()) {
        warning += (warning.isEmpty() ? "" : "\n") + settingsProblem;
    }
    setShownText(*targetModelWarning_, warning);
    QStringList notes;
    for (const auto& note : model.mergePersonalityNotes()) {
        notes << QString::fromStdString(note);
    }
    setShownText(*personalityNotes_, notes.join("\n"));
}

} // namespace korvane
