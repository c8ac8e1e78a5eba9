#include "ui/AppMenus.h"

#include <QAction>
#include <QMainWindow>
#include <QMenu>
#include <QMessageBox>
#include <QPushButton>
#include <algorithm>
#include <gmock/gmock.h>

namespace korvane {
namespace {

// The Help entry shows F1, the key desktops other than macOS use; every
// button of the two boxes has a mnemonic; and a build that names no contact
// address shows none and offers no Email.
TEST(AppMenusTest, HelpShowsF1AndTheBoxesCarryNoMadeUpAddress) {
    QMainWindow window;
    AppMenus::install(window);
    const QList<QAction*> entries = window.findChildren<QAction*>();
    const auto help = std::ranges::find(entries, QString("KorvaneGenerator Help"), &QAction::text);
    ASSERT_NE(help, entries.end());
    EXPECT_EQ((*help)->shortcut(), QKeySequence(Qt::Key_F1)) << "the one a menu shows";

    const auto about = AppMenus::makeAboutBox(AppMenus::applicationInfo(), QIcon());
    const auto helpBox = AppMenus::makeHelpBox();
    for (const QMessageBox* box : {about.get(), helpBox.get()}) {
        for (const QAbstractButton* button : box->buttons()) {
            EXPECT_TRUE(button->text().contains('&')) << button->text().toStdString();
        }
    }
    ASSERT_EQ(about->buttons().size(), 1);
    EXPECT_EQ(about->buttons()[0]->text(), "&OK");
    EXPECT_THAT(about->informativeText().toStdString(),
                testing::Not(testing::AnyOf(testing::HasSubstr("@"), testing::HasSubstr("example"))));
}

// Map by Plugging stands above Quit, where the window's menu has one, and
// starts the mode.
TEST(AppMenusTest, MapByPluggingStandsAboveQuitAndStartsTheMode) {
    for (const bool hasQuit : {true, false}) {
        QMenu file;
        if (hasQuit) {
            file.addAction("&Quit");
        }
        int starts = 0;
        QAction* entry = AppMenus::addMapByPlugging(file, [&starts] { ++starts; });
        EXPECT_EQ(entry->text(), "Map by &Plugging");
        EXPECT_EQ(file.actions().front(), entry);
        EXPECT_EQ(file.actions().constLast()->text(), hasQuit ? "&Quit" : "Map by &Plugging");
        entry->trigger();
        EXPECT_EQ(starts, 1);
    }
}

} // namespace
} // namespace korvane
