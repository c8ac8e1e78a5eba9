#pragma once

#include "collector/CollectorModel.h"

#include <QIcon>
#include <QMessageBox>
#include <QPointer>
#include <QWidget>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

class QLabel;
class QPushButton;
class QStackedWidget;

namespace korvane {

class ActionRow;
class AnimatedHeaderIcon;
class ControllerList;
class OutcomePanel;
class PluggingPanel;
class RoundedPanel;
class StatusBadge;
class TargetModelField;

// The window's content, four bands: the header with the run status, the port
// editor, the action row (ActionRow) and the footer. Every control calls the
// model and every text reads it; the view itself remembers only which
// controller sections are open.
// What the window shows, for the texts that say so: this computer as Linux
// sees it, this Mac's registry, or a registry saved to a file.
struct WindowSource {
    enum class Kind { liveLinux, liveMac, savedRegistry };
    Kind kind = Kind::liveLinux;
    QString savedName; // the saved registry's file name
};

class ContentView : public QWidget {
  public:
    ContentView(std::shared_ptr<CollectorModel> model, QIcon appIcon, QWidget* parent = nullptr);
    ~ContentView() override;

    CollectorModel& model() const { return *model_; }
    const std::shared_ptr<CollectorModel>& sharedModel() const { return model_; }
    const std::set<std::string>& expandedControllerKeys() const { return expandedControllerKeys_; }
    // Opens or closes a controller's section, as a click on its header does.
    void toggleSection(const std::string& controllerKey);

    // For tests and the screenshot: the parts a user looks at.
    struct Parts {
        StatusBadge* badge;
        QLabel* counter;
        QPushButton* resetPorts;
        QPushButton* updateIDs;
        QPushButton* selectAll;
        QPushButton* deselectAll;
        QLabel* scanNotices; // what the last scan couldn't learn and how to; hidden when nothing
        QLabel* emptyHint;
        ControllerList* list;
        QPushButton* generate;
        QPushButton* openZip;
        QPushButton* mapByPlugging;
        PluggingPanel* plugging; // shown while mapping by plugging
        TargetModelField* targetModel;
        QLabel* targetModelWarning; // hidden while there is nothing to warn of
        QLabel* personalityNotes;   // hidden while there is nothing to note
        OutcomePanel* outcome;
        QPushButton* donate;
    };
    const Parts& parts() const { return parts_; }
    // The port limit alert while it stands over the window.
    QMessageBox* portLimitAlert() const { return portLimitAlert_; }
    // A problem with remembering the window's settings, shown with the target
    // model's warning; empty clears it.
    void setSettingsProblem(const QString& text);
    // Says which source the window shows; live Linux until told.
    void setSource(WindowSource source);
    QLabel* subtitle() const { return subtitle_; }
    QLabel* hint() const { return hint_; }
    QLabel* generateReason() const;
    // Asked before Reset Ports throws away the selection of an opened map or
    // an imported package; true goes on. A message box unless replaced.
    std::function<bool(const QString&)> confirmReset;
    // A target model remembered for another machine, offered beside the field.
    void offerTargetModel(const QString& model);
    // Map by plugging: shows its panel over the list until Done.
    void startPlugging();
    // Shows what Done learned. A message box unless replaced.
    std::function<void(const QString&)> showPluggingSummary;

  protected:
    void showEvent(QShowEvent* event) override;
    void changeEvent(QEvent* event) override;

  private:
    QWidget* makeHeader(QIcon appIcon);
    QWidget* makeEditorPanel();
    QWidget* makeActionRow();
    QWidget* makeFooter();
    void applyColours();
    void refresh();
    void showControllers();
    void openPortLimitAlert();
    void resetPorts();
    void showBadge();
    void showSourceTexts();
    // Tab follows the reading order; made again when controls come or go.
    void applyReadingOrder();
    // Where the keyboard starts once the first scan is in: the first control,
    // not the Generate button the focus fell to while the others were busy.
    void focusFirstControl();

    std::shared_ptr<CollectorModel> model_;
    std::set<std::string> expandedControllerKeys_;
    std::vector<std::string> lastControllerKeys_;
    std::size_t observer_ = 0;
    bool hasAppeared_ = false;
    bool isFirstScanPending_ = false;
    bool hasScanned_ = false;
    bool isScanUnderWay_ = false;
    WindowSource source_;
    QLabel* subtitle_ = nullptr;
    QLabel* hint_ = nullptr;
    // What a run writes from; the badge's outcome holds while it is as the
    // last run found it.
    struct RunInput {
        std::set<std::string> selected;
        std::map<std::string, std::int64_t> connectors;
        std::string targetModel;
        bool operator==(const RunInput&) const = default;
    };
    RunInput runInput() const;
    std::optional<RunInput> lastRunInput_;
    bool wasRunning_ = false;
    // The map file and map outcome whose selection a confirmed reset replaced.
    std::pair<std::optional<std::filesystem::path>, std::string> resetFrom_;
    std::vector<QWidget*> tabOrder_;

    Parts parts_{};
    std::vector<QWidget*> dividers_;
    std::vector<QLabel*> secondaryTexts_;
    QLabel* makerLine_ = nullptr;
    ActionRow* actionRow_ = nullptr;
    RoundedPanel* editorPanel_ = nullptr;
    RoundedPanel* emptyHintPanel_ = nullptr;
    QStackedWidget* listStack_ = nullptr;
    QPointer<QMessageBox> portLimitAlert_;
    QString settingsProblem_;
    bool isAlertQueued_ = false;
    bool isApplyingColours_ = false;
};

} // namespace korvane
