#pragma once

#include "collector/CollectorModel.h"

#include <QWidget>
#include <map>
#include <optional>
#include <string>

class QLabel;
class QPlainTextEdit;
class QPushButton;

namespace korvane {

// Under the action row: what came of the user's last action (a failed run's
// ERROR line, the ids update's result line, an Open ZIP that found nothing,
// what opening, saving or importing a map gave), one line at a time: each new
// action's outcome replaces the last, and an action that ends without one
// (a good run, Reset Ports) leaves none standing;
// and the Log toggle with the log panel it opens: the model's log as it grows,
// read-only and selectable, with a Copy button. Everything it shows is read
// from the model; the panel itself remembers only whether the log is open.
class OutcomePanel : public QWidget {
  public:
    explicit OutcomePanel(QWidget* parent = nullptr);

    // Shows what the model holds now.
    void showModel(const CollectorModel& model);
    // A new action began: the last outcome no longer holds. The action's own
    // line, when given, shows its next outcome even if the text is as before.
    void dismiss(QLabel* ownLine = nullptr);
    // Colours for the palette the panel stands on.
    void applyColours();

    QLabel* runError() const { return runError_; }
    QLabel* idsUpdateResult() const { return idsUpdateResult_; }
    QLabel* openZipProblem() const { return openZipProblem_; }
    QLabel* mapOutcome() const { return mapOutcome_; }
    QPushButton* logToggle() const { return logToggle_; }
    QPlainTextEdit* log() const { return log_; }
    QPushButton* copyLog() const { return copyLog_; }
    bool isLogOpen() const;

    // Puts the log on the clipboard, masked as the ZIP's log file is: a log
    // that is copied is mostly pasted somewhere public.
    std::function<void()> onCopy;

  protected:
    void changeEvent(QEvent* event) override;

  private:
    void setLogOpen(bool isOpen);
    void appendNewLog();

    QLabel* runError_;
    QLabel* idsUpdateResult_;
    QLabel* openZipProblem_;
    QLabel* mapOutcome_;
    QPushButton* logToggle_;
    QWidget* logArea_;
    QPlainTextEdit* log_;
    QPushButton* copyLog_;
    const CollectorModel* model_ = nullptr; // as last shown
    std::size_t shownLogSize_ = 0;          // how much of its log the view holds
    // The line of the latest outcome, or none; each line's text as last
    // read, to tell which one is new.
    QLabel* current_ = nullptr;
    std::map<QLabel*, std::optional<std::string>> lastSeen_;
    bool wasRunning_ = false;
    bool wasUpdatingIDs_ = false;
    bool showsFailedUpdate_ = false;
    bool showsRefusedMap_ = false;
    bool showsOpenZipProblem_ = false;
    bool isApplyingColours_ = false;
};

} // namespace korvane
