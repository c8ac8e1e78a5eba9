#include "ui/TargetModelField.h"

#include "records/MacModel.h"
#include "ui/WheelGuard.h"
#include "ui/WindowStyle.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QStringList>
#include <QVBoxLayout>
#include <QValidator>

namespace korvane {

namespace {

// The SMBIOS models chosen most for machines that run macOS, desktops first,
// newest first; any other model can be typed.
constexpr const char* commonMacModels[] = {
    "iMac20,1",       "iMac20,2",       "iMac19,1",       "iMac18,3",
    "iMac17,1",       "iMacPro1,1",     "MacPro7,1",      "Macmini8,1",
    "MacBookPro16,1", "MacBookPro16,2", "MacBookPro16,3", "MacBookPro15,2",
    "MacBookPro15,1", "MacBookPro14,1", "MacBookAir9,1",  "MacBookAir8,1"};

// Refuses what SMBIOS can't hold, so the field never shows a model a run
// would not write.
class MacModelValidator final : public QValidator {
  public:
    using QValidator::QValidator;
    State validate(QString& input, int&) const override {
        return macModelProblem(input.toStdString()).empty() ? Acceptable : Invalid;
    }
};

} // namespace

QString targetModelWarning(const CollectorModel& model) {
    const TargetMacModel target = model.targetMacModel();
    QStringList lines;
    if (target.value == fallbackMacModel) {
        lines << "macOS applies this map only on a Mac of the model it names.";
    } else if (const std::string note = macModelShapeNote(target.value); !note.empty()) {
        lines << QString::fromStdString(note);
    }
    if (const std::string note = model.targetModelDifferenceNote(); !note.empty()) {
        lines << QString::fromStdString(note);
    }
    return lines.join("\n");
}

TargetModelField::TargetModelField(std::shared_ptr<CollectorModel> model, QWidget* parent)
    : QWidget(parent), model_(std::move(model)), menu_(new QComboBox(this)), source_(new QLabel(this)) {
    // The title and where the value came from above the box, so that the
    // action row keeps its height's worth of width for the buttons.
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(2);
    auto* titleRow = new QHBoxLayout;
    titleRow->setSpacing(6);
    auto* title = new QLabel("Target Mac model", this);
    title->setFont(WindowStyle::font(TextStyle::caption, QFont::DemiBold));
    title->setBuddy(menu_);
    titleRow->addWidget(title);
    source_->setFont(WindowStyle::font(TextStyle::caption));
    source_->setTextFormat(Qt::PlainText);
    titleRow->addWidget(source_);
    titleRow->addStretch(1);
    layout->addLayout(titleRow);

    menu_->setEditable(true);
    menu_->setInsertPolicy(QComboBox::NoInsert);
    menu_->setAccessibleName("Target Mac model");
    menu_->setMinimumWidth(170);
    menu_->setMinimumHeight(26);
    guardWheel(*menu_);
    for (const char* name : commonMacModels) {
        menu_->addItem(name);
    }
    menu_->setCurrentIndex(-1);
    menu_->setValidator(new MacModelValidator(menu_));
    layout->addWidget(menu_);

    setToolTip("The SMBIOS model of the Mac this map is for. macOS applies the map only on a Mac of "
               "this model. Empty: this machine's own model, or \"Mac\" when it names none.");

    // Typing and picking both count; refreshing from the model doesn't come
    // back here, for setEditText only follows what the model already holds.
    connect(menu_, &QComboBox::editTextChanged, this, [this](const QString& text) {
        if (text.trimmed().toStdString() != model_->targetModelChoice()) {
            model_->setTargetModelChoice(text.toStdString());
        }
    });
    refresh();
}

void TargetModelField::setOffer(const QString& model) {
    offer_ = model;
    if (!offer_.isEmpty() && menu_->findText(offer_) < 0) {
        // Inserting keeps the edit text: the offer is never taken unasked.
        const QString text = menu_->currentText();
        menu_->insertItem(0, offer_);
        menu_->setEditText(text);
    }
    refresh();
}

void TargetModelField::refresh() {
    const std::string& choice = model_->targetModelChoice();
    if (menu_->currentText().trimmed().toStdString() != choice) {
        menu_->setEditText(QString::fromStdString(choice));
    }
    const TargetMacModel target = model_->targetMacModel();
    // What a run would use when nothing is chosen.
    const auto& found = model_->machineModel();
    menu_->lineEdit()->setPlaceholderText(
        QString::fromStdString(found.value_or(std::string(fallbackMacModel))));
    QString source = QString::fromStdString(std::string(targetModelSourceText(target.source)));
    if (!offer_.isEmpty() && choice.empty()) {
        source += " \u00B7 " + offer_ + " was chosen for another machine";
    }
    source_->setText(source);
}

} // namespace korvane
