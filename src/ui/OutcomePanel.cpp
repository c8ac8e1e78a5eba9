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

// The log's lines: as many as it gets up to the first, never fewer than the
// second, so that the port list above it keeps its rows on a small screen.
constexpr int logLines = 9;
constexpr int logMinimumLines = 3;

QLabel* outcomeLine() {
    auto* label = new QLabel;
    label->setFont(WindowStyle::font(TextStyle::caption));
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    label->hide();
    return label;
}

void showLine(QLabel& label, const std::optional<std::string>& text, bool isCurrent) {
    const QString shown = text ? QString::fromStdString(*text) : QString();
    if (label.text() != shown) {
        label.setText(shown);
    }
    label.setVisible(isCurrent && text.has_value());
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
    // Beside the toggle, not under the log: the log's height is the list's.
    copyLog_->setAutoDefault(false);
    copyLog_->setToolTip("Copy the log, with serial numbers and similar identifiers masked as in the ZIP");
    copyLog_->hide();
    row->addWidget(copyLog_, 0, Qt::AlignTop);
    row->addWidget(logToggle_, 0, Qt::AlignTop);
    stack->addLayout(row);

    auto* logLayout = new QVBoxLayout(logArea_);
    logLayout->setContentsMargins(0, 0, 0, 0);
    logLayout->setSpacing(6);
    log_->setReadOnly(true);
    log_->setFont(WindowStyle::font(TextStyle::caption, QFont::Normal, FontDesign::monospaced));
    log_->setLineWrapMode(QPlainTextEdit::NoWrap);
    log_->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    const int lineHeight = QFontMetrics(log_->font()).lineSpacing();
    const int frame = 2 * log_->frameWidth() + 8;
    log_->setMinimumHeight(logMinimumLines * lineHeight + frame);
    log_->setMaximumHeight(logLines * lineHeight + frame);
    log_->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    log_->setAccessibleName("Log");
    logLayout->addWidget(log_);
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
    // A run or an ids update that starts is a new action, whoever started it.
    if ((model.isRunning() && !wasRunning_) || (model.isUpdatingIDs() && !wasUpdatingIDs_)) {
        current_ = nullptr;
    }
    wasRunning_ = model.isRunning();
    wasUpdatingIDs_ = model.isUpdatingIDs();

    const auto& map = model.lastMapOutcome();
    const std::pair<QLabel*, std::optional<std::string>> lines[] = {
        {runError_, model.lastRunError()},
        {idsUpdateResult_, model.lastIDsUpdateResult()},
        // The same line tells where to read on once Open ZIP showed the file.
        {openZipProblem_, model.openZipProblem() ? model.openZipProblem() : model.openZipResult()},
        {mapOutcome_, map ? std::optional<std::string>(map->summary) : std::nullopt}};
    for (const auto& [line, text] : lines) {
        auto& seen = lastSeen_[line];
        if (text != seen) {
            if (text) {
                current_ = line;
            }
            seen = text;
        }
    }
    for (const auto& [line, text] : lines) {
        showLine(*line, text, line == current_);
    }
    // The result line reads as a failure only when a download failed.
    const bool hasFailedUpdate = model.hasFailedIDsUpdate();
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

void OutcomePanel::dismiss(QLabel* ownLine) {
    current_ = nullptr;
    if (ownLine) {
        lastSeen_[ownLine].reset();
    }
    for (QLabel* line : {runError_, idsUpdateResult_, openZipProblem_, mapOutcome_}) {
        line->hide();
    }
}

void OutcomePanel::setLogOpen(bool isOpen) {
    logArea_->setVisible(isOpen);
    copyLog_->setVisible(isOpen);
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
