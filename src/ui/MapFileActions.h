#pragma once

#include "collector/CollectorModel.h"
#include "ui/ContentView.h"

#include <QObject>
#include <QPointer>
#include <QString>
#include <QStringList>
#include <filesystem>
#include <functional>
#include <memory>

class QAction;
class QMainWindow;
class QMenu;

namespace korvane {

// The File menu's map entries and what hangs on them: the map's name in the
// window title with the unsaved-changes mark, the recent maps, and the
// question before the window closes or another map opens over unsaved work.
class MapFileActions : public QObject {
  public:
    enum class Answer { save, discard, cancel };

    // Watches the window's closing and shares the content's model (the
    // content may go first: a window deletes its children in order). The
    // recent maps are kept in the user settings file `settingsFile`.
    MapFileActions(QMainWindow& window, ContentView& content, std::filesystem::path settingsFile);
    ~MapFileActions() override;

    // Puts Open Map..., Open Recent, Save Map, Save Map As... and Import
    // Package... at the top of `fileMenu`.
    void install(QMenu& fileMenu);

    // The work behind the entries, after their file dialogs. Each shows its
    // outcome under the action row, and a refusal or a partial match in a
    // box too. False when nothing was done.
    bool openMap(const QString& path);
    bool saveMap();
    bool saveMapAs(const QString& path);
    bool importPackage(const QString& path);
    // True when the session may be left: nothing unsaved, or the user said
    // to save (and it was saved) or to discard.
    bool mayLeaveSession();

    QStringList recentMaps() const;

    struct Actions {
        QAction* open;
        QMenu* recent;
        QAction* save;
        QAction* saveAs;
        QAction* import;
    };
    const Actions& actions() const { return actions_; }

    // What would otherwise be modal: the question, the file dialogs and the
    // boxes. Tests replace them.
    std::function<Answer(const QString& question)> askToSave;
    // An empty text when the user cancelled.
    std::function<QString(const QString& caption, const QString& filter, bool isForSaving)> chooseFile;
    std::function<void(const MapOutcome& outcome)> showAlert;

    static constexpr int maximumRecentMaps = 8;

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    void refresh();
    bool report(const MapOutcome& outcome);
    void rememberRecent(const QString& path);
    void setRecentMaps(const QStringList& recent);
    void showRecentMenu();

    QMainWindow& window_;
    QPointer<ContentView> content_;
    std::shared_ptr<CollectorModel> model_;
    std::filesystem::path settingsFile_;
    Actions actions_{};
    std::size_t observer_ = 0;
};

} // namespace korvane
