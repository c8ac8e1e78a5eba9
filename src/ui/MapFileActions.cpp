#include "ui/MapFileActions.h"

#include "app/UserSettings.h"
#include "records/CollectorError.h"

#include <QAction>
#include <QCloseEvent>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QMainWindow>
#include <QMenu>
#include <QMessageBox>
#include <QPushButton>

namespace korvane {

namespace {

constexpr const char* mapFilter = "Korvane maps (*.korvanemap *.json);;All files (*)";
constexpr const char* packageFilter = "Port-map packages (Info.plist *.plist *.zip);;All files (*)";
constexpr const char* defaultMapName = "Korvane.korvanemap";

QString shownName(const std::filesystem::path& file) {
    return QFileInfo(QString::fromStdString(file.string())).fileName();
}

MapFileActions::Answer askWithBox(QWidget* parent, const QString& question) {
    QMessageBox box(QMessageBox::Warning, "KorvaneGenerator", question,
                    QMessageBox::Save | QMessageBox::Discard | QMessageBox::Cancel, parent);
    box.setInformativeText("Checked ports, connectors, nicknames and the devices seen are lost otherwise.");
    box.setDefaultButton(QMessageBox::Save);
    box.button(QMessageBox::Save)->setText("&Save");
    box.button(QMessageBox::Discard)->setText("&Discard");
    box.button(QMessageBox::Cancel)->setText("&Cancel");
    switch (box.exec()) {
    case QMessageBox::Save:
        return MapFileActions::Answer::save;
    case QMessageBox::Discard:
        return MapFileActions::Answer::discard;
    default:
        return MapFileActions::Answer::cancel;
    }
}

} // namespace

MapFileActions::MapFileActions(QMainWindow& window, ContentView& content, std::filesystem::path settingsFile)
    : QObject(&window), window_(window), content_(&content), model_(content.sharedModel()),
      settingsFile_(std::move(settingsFile)) {
    askToSave = [this](const QString& question) { return askWithBox(&window_, question); };
    chooseFile = [this](const QString& caption, const QString& filter, bool isForSaving) {
        if (isForSaving) {
            return QFileDialog::getSaveFileName(&window_, caption, QDir::home().filePath(defaultMapName),
                                                filter);
        }
        return QFileDialog::getOpenFileName(&window_, caption, QDir::homePath(), filter);
    };
    showAlert = [this](const MapOutcome& outcome) {
        QMessageBox box(outcome.succeeded ? QMessageBox::Information : QMessageBox::Warning,
                        "KorvaneGenerator", QString::fromStdString(outcome.summary), QMessageBox::Ok,
                        &window_);
        box.button(QMessageBox::Ok)->setText("&OK");
        QStringList lines;
        for (const auto& line : outcome.details) {
            lines << QString::fromStdString(line);
        }
        if (!lines.isEmpty()) {
            box.setInformativeText(outcome.succeeded ? "These are not on this machine:"
                                                     : "None of them is on this machine.");
            box.setDetailedText(lines.join('\n'));
        }
        box.exec();
    };
    window_.installEventFilter(this);
    observer_ = model_->observe([this] { refresh(); });
}

MapFileActions::~MapFileActions() {
    model_->stopObserving(observer_);
}

void MapFileActions::install(QMenu& fileMenu) {
    QAction* first = fileMenu.actions().isEmpty() ? nullptr : fileMenu.actions().front();
    actions_.open = new QAction("&Open Map...", &fileMenu);
    actions_.open->setShortcut(QKeySequence::Open);
    actions_.recent = new QMenu("Open &Recent", &fileMenu);
    actions_.save = new QAction("&Save Map", &fileMenu);
    actions_.save->setShortcut(QKeySequence::Save);
    actions_.saveAs = new QAction("Save Map &As...", &fileMenu);
    actions_.saveAs->setShortcut(QKeySequence::SaveAs);
    actions_.import = new QAction("&Import Package...", &fileMenu);

    fileMenu.insertAction(first, actions_.open);
    fileMenu.insertMenu(first, actions_.recent);
    fileMenu.insertSeparator(first);
    fileMenu.insertAction(first, actions_.save);
    fileMenu.insertAction(first, actions_.saveAs);
    fileMenu.insertSeparator(first);
    fileMenu.insertAction(first, actions_.import);
    if (first) {
        fileMenu.insertSeparator(first);
    }

    connect(actions_.open, &QAction::triggered, this, [this] {
        if (!mayLeaveSession()) {
            return;
        }
        const QString path = chooseFile("Open Map", mapFilter, false);
        if (!path.isEmpty()) {
            openMap(path);
        }
    });
    connect(actions_.save, &QAction::triggered, this, [this] { saveMap(); });
    connect(actions_.saveAs, &QAction::triggered, this, [this] {
        const QString path = chooseFile("Save Map As", mapFilter, true);
        if (!path.isEmpty()) {
            saveMapAs(path);
        }
    });
    connect(actions_.import, &QAction::triggered, this, [this] {
        const QString path =
            chooseFile("Import a package's Info.plist or a Korvane.zip", packageFilter, false);
        if (!path.isEmpty()) {
            importPackage(path);
        }
    });
    connect(actions_.recent, &QMenu::aboutToShow, this, [this] { showRecentMenu(); });
    showRecentMenu();
    refresh();
}

bool MapFileActions::report(const MapOutcome& outcome) {
    if (!outcome.succeeded || !outcome.details.empty()) {
        showAlert(outcome);
    }
    return outcome.succeeded;
}

bool MapFileActions::openMap(const QString& path) {
    const bool isOpened = report(model_->openMap(path.toStdString()));
    if (isOpened) {
        rememberRecent(path);
    }
    return isOpened;
}

bool MapFileActions::saveMap() {
    const auto& current = model_->mapFileURL();
    if (!current) {
        const QString path = chooseFile("Save Map", mapFilter, true);
        return !path.isEmpty() && saveMapAs(path);
    }
    return saveMapAs(QString::fromStdString(current->string()));
}

bool MapFileActions::saveMapAs(const QString& path) {
    const bool isSaved = report(model_->saveMap(path.toStdString()));
    if (isSaved) {
        rememberRecent(path);
    }
    return isSaved;
}

bool MapFileActions::importPackage(const QString& path) {
    return report(model_->importPackage(path.toStdString()));
}

bool MapFileActions::mayLeaveSession() {
    const CollectorModel& model = *model_;
    if (!model.hasUnsavedChanges()) {
        return true;
    }
    const QString question = model.mapFileURL()
                                 ? QString("Save the changes to %1?").arg(shownName(*model.mapFileURL()))
                                 : QString("Save this mapping session as a map?");
    switch (askToSave(question)) {
    case Answer::save:
        return saveMap();
    case Answer::discard:
        return true;
    case Answer::cancel:
        break;
    }
    return false;
}

QStringList MapFileActions::recentMaps() const {
    QStringList recent;
    for (const auto& path : readUserSettings(settingsFile_).recentMaps) {
        recent << QString::fromStdString(path);
    }
    return recent;
}

void MapFileActions::setRecentMaps(const QStringList& recent) {
    try {
        updateUserSettings(settingsFile_, [&recent](UserSettings& settings) {
            settings.recentMaps.clear();
            for (const QString& path : recent) {
                settings.recentMaps.push_back(path.toStdString());
            }
        });
    } catch (...) {
        if (content_) {
            content_->setSettingsProblem(QString::fromStdString("The recent maps can't be remembered: " +
                                                                errorDescription(std::current_exception())));
        }
    }
}

void MapFileActions::rememberRecent(const QString& path) {
    const QString absolute = QFileInfo(path).absoluteFilePath();
    QStringList recent = recentMaps();
    recent.removeAll(absolute);
    recent.prepend(absolute);
    while (recent.size() > maximumRecentMaps) {
        recent.removeLast();
    }
    setRecentMaps(recent);
}

void MapFileActions::showRecentMenu() {
    QMenu& menu = *actions_.recent;
    menu.clear();
    const QStringList recent = recentMaps();
    for (const QString& path : recent) {
        QAction* entry = menu.addAction(QFileInfo(path).fileName());
        entry->setToolTip(path);
        connect(entry, &QAction::triggered, this, [this, path] {
            if (mayLeaveSession()) {
                openMap(path);
            }
        });
    }
    if (recent.isEmpty()) {
        menu.addAction("No Recent Maps")->setEnabled(false);
    } else {
        menu.addSeparator();
        connect(menu.addAction("Clear Menu"), &QAction::triggered, this, [this] { setRecentMaps({}); });
    }
}

void MapFileActions::refresh() {
    const CollectorModel& model = *model_;
    const QString title = model.mapFileURL() ? shownName(*model.mapFileURL()) + "[*] — KorvaneGenerator"
                                             : QString("KorvaneGenerator[*]");
    if (window_.windowTitle() != title) {
        window_.setWindowTitle(title);
    }
    window_.setWindowModified(model.hasUnsavedChanges());
    // A reset under way would replace what a map or package checks.
    const bool mayReplace = !model.isScanningUSB();
    if (actions_.open) {
        actions_.open->setEnabled(mayReplace);
        actions_.recent->setEnabled(mayReplace);
        actions_.import->setEnabled(mayReplace);
    }
}

bool MapFileActions::eventFilter(QObject* watched, QEvent* event) {
    if (watched == &window_ && event->type() == QEvent::Close && !mayLeaveSession()) {
        event->ignore();
        return true;
    }
    return QObject::eventFilter(watched, event);
}

} // namespace korvane
