#include "ui/PluggingPanel.h"

#include "mapfile/PortSighting.h"
#include "platform/PlatformFolders.h"
#include "ui/WindowStyle.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>
#include <algorithm>
#include <chrono>

namespace korvane {

namespace {

// A new name each time, as the terminal's session uses, so that no earlier
// session is written over.
std::filesystem::path newMapInDataFolder() {
    std::string stamp = utcTimeText(std::chrono::system_clock::now());
    stamp.erase(std::remove(stamp.begin(), stamp.end(), ':'), stamp.end());
    return applicationSupportDirectory() / "KorvaneGenerator" / "Maps" / ("map-" + stamp + ".korvanemap");
}

QLabel* line(const QFont& font) {
    auto* label = new QLabel;
    label->setFont(font);
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    return label;
}

QString lines(const std::vector<std::string>& texts) {
    QStringList joined;
    for (const auto& text : texts) {
        joined << QString::fromStdString(text);
    }
    return joined.join("\n");
}

} // namespace

PluggingPanel::PluggingPanel(std::shared_ptr<CollectorModel> model, QWidget* parent)
    : QWidget(parent), model_(std::move(model)),
      instruction_(line(WindowStyle::font(TextStyle::callout, QFont::DemiBold))),
      seen_(line(WindowStyle::font(TextStyle::callout))), name_(new QLineEdit),
      progress_(line(WindowStyle::font(TextStyle::caption))), done_(new QPushButton("Don&e")) {
    instruction_->setText(PluggingSession::instruction);
    auto* area = new QVBoxLayout(this);
    area->setContentsMargins(0, 0, 0, 0);
    area->setSpacing(6);
    area->addWidget(instruction_);
    area->addWidget(seen_);
    auto* row = new QHBoxLayout;
    row->setSpacing(8);
    auto* label = new QLabel("Soc&ket name:");
    label->setBuddy(name_);
    row->addWidget(label);
    name_->setPlaceholderText("Empty: none; an earlier socket's name: the same socket");
    name_->setEnabled(false);
    row->addWidget(name_, 1);
    done_->setAutoDefault(false);
    row->addWidget(done_);
    area->addLayout(row);
    area->addWidget(progress_);
    hide();

    connect(name_, &QLineEdit::returnPressed, this, [this] { giveName(); });
    connect(done_, &QPushButton::clicked, this, [this] {
        const QString summary = finish();
        if (onDone) {
            onDone(summary);
        }
    });
}

PluggingPanel::~PluggingPanel() = default;

void PluggingPanel::start() {
    if (session_) {
        return;
    }
    mapFile_ = model_->mapFileURL().value_or(newMapInDataFolder());
    session_ = std::make_unique<PluggingSession>(model_, mapFile_);
    session_->onSighting = [this](const PlugSighting& sighting) { sighted(sighting); };
    session_->onSaveFailure = [this](const std::string& reason) {
        seen_->setText(seen_->text() + "\n" + QString::fromStdString(reason));
    };
    seen_->setText(lines(session_->startLines()).section('\n', 0, -2));
    if (!model_->mapFileURL()) {
        // A folder that can't be made shows as the first save's failure.
        std::error_code ignored;
        std::filesystem::create_directories(mapFile_.parent_path(), ignored);
        seen_->setText(seen_->text() + "\nThe map is saved to " + QString::fromStdString(mapFile_.string()) +
                       " after every socket.");
    }
    name_->clear();
    name_->setEnabled(false);
    showProgress();
    show();
}

QString PluggingPanel::finish() {
    if (!session_) {
        return {};
    }
    const MapOutcome saved = session_->save();
    QString summary =
        QString::fromStdString(saved.succeeded ? "Map saved to " + mapFile_.string() + "." : saved.summary);
    summary += "\n" + lines(session_->summaryLines());
    session_.reset();
    hide();
    if (onSeenPort) {
        onSeenPort({});
    }
    return summary;
}

void PluggingPanel::sighted(const PlugSighting& sighting) {
    seen_->setText(QString::fromStdString(sighting.text));
    if (onSeenPort) {
        onSeenPort(sighting.portKey);
    }
    name_->setEnabled(sighting.asksName);
    if (sighting.asksName) {
        name_->clear();
        name_->setFocus(Qt::OtherFocusReason);
    }
    showProgress();
}

void PluggingPanel::giveName() {
    if (!session_ || !session_->isAwaitingName()) {
        return;
    }
    const std::string reply = session_->nameSocket(name_->text().toStdString());
    seen_->setText(seen_->text() + "\n" + QString::fromStdString(reply));
    // A refused name keeps the field for another try.
    name_->setEnabled(session_->isAwaitingName());
    if (!session_->isAwaitingName()) {
        name_->clear();
    }
    showProgress();
}

void PluggingPanel::showProgress() {
    progress_->setText(session_ ? QString::fromStdString(session_->progressText()) : QString());
}

} // namespace korvane
