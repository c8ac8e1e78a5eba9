#include "ui/OutcomePanel.h"

#include "ui/SymbolIcons.h"
#include "ui/WindowStyle.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScrollBar>
#include <QTextCursor>
#include <QVBoxLayout>

namespace korvane {

namespace {

constexpr int logHeight = 160;

QLabel* outcomeLine() {
    auto* label = new QLabel;
    label->setFont(WindowStyle::font(TextStyle::caption));
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    label->hide();
    return label;
}

void showLine(QLabel& label, const std::optional<std::string>& text) {
    const QString shown = text ? QString::fromStdString(*text) : QString();
    if (label.text() != shown) {
        label.setText(shown);
    }
    label.setVisible(text.has_value());
}

} // namespace

OutcomePanel::OutcomePanel(QWidget* parent)
    : QWidget(parent), runError_(outcomeLine()), idsUpdateResult_(outcomeLine()),
      openZipProblem_(outcomeLine()), mapOutcome_(outcomeLine()), logToggle_(new QPushButton("&Log")),
      logArea_(new QWidget), log_(new QPlainTextEdit), copyLog_(new QPushButton("&Copy")) {
    auto* stack = new QVBoxLayout(this);
    stack->setContentsMargins(0, 0, 0, 0);
    stack->setSpacing(6);

    auto* row = new QHBoxLayout;
    row->setSpacing(12);
    auto* lines = new QVBoxLayout;
    lines->setSpacing(2);
    for (QLabel* line : {runError_, idsUpdateResult_, openZipProblem_, mapOutcome_}) {
        lines->addWidget(line);
    }
    lines->addStretch(1);
    row->addLayout(lines, 1);
    logToggle_->setCheckable(true);
    logToggle_->setAutoDefault(false);
    logToggle_->setToolTip("Show the log of this session");
    row->addWidget(logToggle_, 0, Qt::AlignTop);
    stack->addLayout(row);

    auto* logLayout = new QVBoxLayout(logArea_);
    logLayout->setContentsMargins(0, 0, 0, 0);
    logLayout->setSpacing(6);
    log_->setReadOnly(true);
    log_->setFont(WindowStyle::font(TextStyle::caption, QFont::Normal, FontDesign::monospaced));
    log_->setLineWrapMode(QPlainTextEdit::NoWrap);
    log_->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    log_->setFixedHeight(logHeight);
    log_->setAccessibleName("Log");
    logLayout->addWidget(log_);
    auto* copyRow = new QHBoxLayout;
    copyRow->addStretch(1);
    copyLog_->setAutoDefault(false);
    copyLog_->setToolTip("Copy the log, with serial numbers and similar identifiers masked as in the ZIP");
    copyRow->addWidget(copyLog_);
    logLayout->addLayout(copyRow);
    logArea_->hide();
    stack->addWidget(logArea_);

    connect(logToggle_, &QPushButton::toggled, this, [this](bool isOpen) { setLogOpen(isOpen); });
    connect(copyLog_, &QPushButton::clicked, this, [this] {
        if (onCopy) {
            onCopy();
        }
    });
    applyColours();
}

bool OutcomePanel::isLogOpen() const {
    return logToggle_->isChecked();
}

void OutcomePanel::showModel(const CollectorModel& model) {
    model_ = &model;
    showLine(*runError_, model.lastRunError());
    showLine(*idsUpdateResult_, model.lastIDsUpdateResult());
    // The same line tells where to read on once Open ZIP showed the file.
    showLine(*openZipProblem_, model.openZipProblem() ? model.openZipProblem() : model.openZipResult());
    // The result line reads as a failure only when a download failed.
    const bool hasFailedUpdate = model.hasFailedIDsUpdate();
    const auto& map = model.lastMapOutcome();
    showLine(*mapOutcome_, map ? std::optional<std::string>(map->summary) : std::nullopt);
    const bool hasRefusedMap = map && !map->succeeded;
    const bool hasOpenZipProblem = model.openZipProblem().has_value();
    if (hasFailedUpdate != showsFailedUpdate_ || hasRefusedMap != showsRefusedMap_ ||
        hasOpenZipProblem != showsOpenZipProblem_) {
        showsFailedUpdate_ = hasFailedUpdate;
        showsRefusedMap_ = hasRefusedMap;
        showsOpenZipProblem_ = hasOpenZipProblem;
        applyColours();
    }
    appendNewLog();
}

void OutcomePanel::setLogOpen(bool isOpen) {
    logArea_->setVisible(isOpen);
    logToggle_->setToolTip(isOpen ? "Hide the log" : "Show the log of this session");
    applyColours();
    appendNewLog();
}

void OutcomePanel::appendNewLog() {
    // Only the new lines are added, and only while the panel is open; the
    // reader's selection and scroll position stay where they were, unless
    // the view was following the end.
    if (!model_ || !isLogOpen() || shownLogSize_ >= model_->logText().size()) {
        return;
    }
    const std::string& logText = model_->logText();
    QScrollBar* scroll = log_->verticalScrollBar();
    const bool isAtEnd = scroll->value() == scroll->maximum();
    QTextCursor end(log_->document());
    end.movePosition(QTextCursor::End);
    end.insertText(QString::fromUtf8(logText.data() + shownLogSize_,
                                     static_cast<qsizetype>(logText.size() - shownLogSize_)));
    shownLogSize_ = logText.size();
    if (isAtEnd) {
        scroll->setValue(scroll->maximum());
    }
}

void OutcomePanel::applyColours() {
    isApplyingColours_ = true;
    const WindowStyle style(palette());
    WindowStyle::setTextColor(*runError_, style.errorText());
    WindowStyle::setTextColor(*openZipProblem_, showsOpenZipProblem_ ? style.errorText() : style.secondary());
    WindowStyle::setTextColor(*idsUpdateResult_, showsFailedUpdate_ ? style.errorText() : style.secondary());
    WindowStyle::setTextColor(*mapOutcome_, showsRefusedMap_ ? style.errorText() : style.secondary());
    const QPalette& colours = logToggle_->palette();
    logToggle_->setIcon(SymbolIcons::icon(isLogOpen() ? "chevron.down" : "chevron.right",
                                          colours.color(QPalette::Active, QPalette::ButtonText),
                                          colours.color(QPalette::Disabled, QPalette::ButtonText)));
    isApplyingColours_ = false;
}

void OutcomePanel::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange && !isApplyingColours_) {
        applyColours();
    }
}

} // namespace korvane
