#include "ui/MapFileActions.h"

#include "ViewFixture.h"
#include "base/FileIO.h"
#include "ui/ContentView.h"
#include "ui/OutcomePanel.h"

#include <QAction>
#include <QLabel>
#include <QMainWindow>
#include <QMenu>
#include <gmock/gmock.h>

namespace korvane {
namespace {

using Answer = MapFileActions::Answer;

class MapFileActionsTest : public ViewFixture {
  public:
    void SetUp() override {
        ViewFixture::SetUp();
        window = std::make_unique<QMainWindow>();
        content = new ContentView(model, QIcon());
        window->setCentralWidget(content);
        actions = new MapFileActions(*window, *content, home.path() / "settings.json");
        actions->install(fileMenu);
        actions->askToSave = [this](const QString& question) {
            questions << question;
            return answer;
        };
        actions->chooseFile = [this](const QString&, const QString&, bool) { return chosen; };
        actions->showAlert = [this](const MapOutcome& outcome) { alerts.push_back(outcome); };
        scanShowing({controller});
        window->show();
    }

    QString path(const char* name) const { return QString::fromStdString((home.path() / name).string()); }

    const USBControllerMap controller = makeController("XHC1", 0x8086, 0xa36d, makePorts(3, 1));
    QMenu fileMenu;
    std::unique_ptr<QMainWindow> window;
    ContentView* content = nullptr;
    MapFileActions* actions = nullptr;
    QStringList questions;
    Answer answer = Answer::cancel;
    QString chosen;
    std::vector<MapOutcome> alerts;
};

TEST_F(MapFileActionsTest, TheTitleNamesTheMapAndMarksUnsavedWork) {
    EXPECT_EQ(window->windowTitle(), "KorvaneGenerator[*]");
    EXPECT_FALSE(window->isWindowModified());
    model->setPortSelected(controller, controller.ports[1], true);
    EXPECT_TRUE(window->isWindowModified());

    ASSERT_TRUE(actions->saveMapAs(path("first.korvanemap")));
    EXPECT_EQ(window->windowTitle(), "first.korvanemap[*] — KorvaneGenerator");
    EXPECT_FALSE(window->isWindowModified());
    EXPECT_EQ(content->parts().outcome->mapOutcome()->text(), "Saved first.korvanemap.");
    ASSERT_TRUE(actions->saveMapAs(path("second.korvanemap")));
    EXPECT_EQ(actions->recentMaps(), QStringList({path("second.korvanemap"), path("first.korvanemap")}));
    EXPECT_TRUE(alerts.empty()) << "nothing to tell beyond the line";
}

TEST_F(MapFileActionsTest, LeavingUnsavedWorkAsksAndGoesAheadOnlyOnceSavedOrDiscarded) {
    EXPECT_TRUE(window->close()) << "nothing to lose, nothing to ask";
    const std::tuple<const char*, Answer, QString, bool> cases[] = {
        {"untitled: save, then cancel the file dialog", Answer::save, "", false},
        {"untitled: save to a chosen file", Answer::save, path("chosen.korvanemap"), true},
        {"cancel", Answer::cancel, "", false},
        {"discard", Answer::discard, "", true},
        {"save to the open map", Answer::save, "", true},
    };
    int edit = 0;
    for (const auto& [name, given, file, closes] : cases) {
        SCOPED_TRACE(name);
        window->show();
        model->setNickname(controller, controller.ports[0], "name " + std::to_string(++edit));
        answer = given;
        chosen = file;
        EXPECT_EQ(window->close(), closes);
        EXPECT_EQ(model->hasUnsavedChanges(), !closes || given == Answer::discard);
    }
    const QString untitled = "Save this mapping session as a map?";
    const QString named = "Save the changes to chosen.korvanemap?";
    EXPECT_EQ(questions, QStringList({untitled, untitled, named, named, named}));
    EXPECT_THAT(readFileBytes(home.path() / "chosen.korvanemap").value_or(""), testing::HasSubstr("name 5"));
}

TEST_F(MapFileActionsTest, ARefusedMapSaysWhyAndChangesNothing) {
    model->setPortSelected(controller, controller.ports[2], true);
    writeFileAtomically(home.path() / "junk.korvanemap", "not a map");
    EXPECT_FALSE(actions->openMap(path("junk.korvanemap")));
    ASSERT_EQ(alerts.size(), 1u);
    EXPECT_FALSE(alerts[0].succeeded);
    EXPECT_EQ(content->parts().outcome->mapOutcome()->text().toStdString(), alerts[0].summary);

    model->refreshActiveUSBDevices();
    QApplication::processEvents();
    EXPECT_FALSE(actions->actions().open->isEnabled()) << "a scan under way may replace what a map sets";
    EXPECT_FALSE(actions->actions().import->isEnabled());
}

} // namespace
} // namespace korvane
