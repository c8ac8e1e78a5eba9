#include "ui/AppMenus.h"

#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QMainWindow>
#include <QMenuBar>
#include <QMessageBox>
#include <algorithm>
#include <gtest/gtest.h>
#include <map>

namespace korvane {
namespace {

TEST(AppMenus, TheAboutBoxsVersionLineTakesTextsOnly) {
    const std::pair<QVariantMap, const char*> rows[] = {
        {{{"CFBundleShortVersionString", "2.3"}, {"CFBundleVersion", "41"}}, "KorvaneGenerator v2.3 (41)"},
        {{}, "KorvaneGenerator v1.0 (1)"},
        {{{"CFBundleShortVersionString", 2.3}, {"CFBundleVersion", 41}}, "KorvaneGenerator v1.0 (1)"},
    };
    for (const auto& [info, firstLine] : rows) {
        EXPECT_EQ(AppMenus::aboutText(info).section('\n', 0, 0), firstLine);
    }
}

// The buttons as the user reads them, left to right.
QStringList buttonTexts(const QMessageBox& box) {
    auto buttons = box.buttons();
    std::sort(buttons.begin(), buttons.end(), [](const QAbstractButton* a, const QAbstractButton* b) {
        return a->mapToGlobal(QPoint()).x() < b->mapToGlobal(QPoint()).x();
    });
    QStringList texts;
    for (const QAbstractButton* button : buttons) {
        texts << button->text();
    }
    return texts;
}

TEST(AppMenus, TheAboutBoxsEmailOpensMailAndOKNothing) {
    for (const QString pressed : {"OK", "Email"}) {
        auto box = AppMenus::makeAboutBox({}, QIcon());
        box->open();
        EXPECT_EQ(buttonTexts(*box), (QStringList{"Email", "OK"}));
        for (QAbstractButton* button : box->buttons()) {
            if (button->text() == pressed) {
                button->click();
            }
        }
        std::vector<QUrl> opened;
        AppMenus::answerAbout(*box, [&](const QUrl& address) { opened.push_back(address); });
        EXPECT_EQ(opened, pressed == "OK" ? std::vector<QUrl>{}
                                          : std::vector{QUrl("mailto:korvanegenerator@example.org")});
    }
    QMainWindow window;
    AppMenus::install(window);
    std::map<QString, QAction*> actions;
    for (QAction* action : window.menuBar()->findChildren<QAction*>()) {
        actions[action->text()] = action;
    }
    ASSERT_TRUE(actions.contains("About KorvaneGenerator") && actions.contains("KorvaneGenerator Help"));
    EXPECT_EQ(actions["About KorvaneGenerator"]->menuRole(), QAction::AboutRole);
    EXPECT_EQ(actions["KorvaneGenerator Help"]->shortcuts(),
              (QList<QKeySequence>{QKeySequence("Ctrl+Shift+?"), QKeySequence(Qt::Key_F1)}));
}

} // namespace
} // namespace korvane
