#include "ui/ActionRow.h"

#include "ui/ElidedLabel.h"
#include "ui/TargetModelField.h"
#include "ui/VisibleControlStyle.h"
#include "ui/WindowStyle.h"

#include <QHBoxLayout>
#include <QLabel>
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

} // namespace

ActionRow::ActionRow(std::shared_ptr<CollectorModel> model, QWidget* parent)
    : QWidget(parent), model_(std::move(model)), generate_(new QPushButton("&Generate Korvane.kext")),
      openZip_(new QPushButton("&Open ZIP")), targetModel_(new TargetModelField(model_)),
      output_(new ElidedLabel), targetModelWarning_(noteLine()), personalityNotes_(noteLine()),
      generateReason_(noteLine()) {
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

    connect(generate_, &QPushButton::clicked, this, [this] { model_->startCollection(); });
    connect(openZip_, &QPushButton::clicked, this, [this] { model_->openDesktopZip(); });
}

void ActionRow::refresh(const QString& settingsProblem, const QString& nothingToWrite) {
    const CollectorModel& model = *model_;
    generate_->setEnabled(!model.isRunning() && nothingToWrite.isEmpty());
    setShownText(*generateReason_, nothingToWrite);
    generate_->setAccessibleDescription(nothingToWrite);
    openZip_->setEnabled(model.lastZipURL().has_value() && !model.isRunning());

    targetModel_->refresh();
    QString warning = korvane::targetModelWarning(model.targetMacModel());
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
