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

class AppMenusBoxes : public testing::Test {
  protected:
    void SetUp() override {
        if (!qApp) {
            GTEST_SKIP() << "no Qt platform: run under ctest, which sets QT_QPA_PLATFORM=offscreen";
        }
    }

    // The buttons as the user reads them, left to right.
    static QStringList buttonTexts(const QMessageBox& box) {
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
    static QAbstractButton* button(const QMessageBox& box, const QString& text) {
        for (QAbstractButton* candidate : box.buttons()) {
            if (candidate->text() == text) {
                return candidate;
            }
        }
        return nullptr;
    }
};

TEST_F(AppMenusBoxes, AboutEmailOpensMailAndOKNothing) {
    for (const char* pressed : {"OK", "Email"}) {
        SCOPED_TRACE(pressed);
        auto box = AppMenus::makeAboutBox({}, QIcon());
        EXPECT_EQ(box->text(), "About KorvaneGenerator");
        box->open();
        EXPECT_EQ(buttonTexts(*box), (QStringList{"Email", "OK"}));
        button(*box, pressed)->click();
        std::vector<QUrl> opened;
        AppMenus::answerAbout(*box, [&](const QUrl& address) { opened.push_back(address); });
        if (QString(pressed) == "OK") {
            EXPECT_TRUE(opened.empty());
        } else {
            ASSERT_EQ(opened.size(), 1u);
            EXPECT_EQ(opened[0].toString(), "mailto:korvanegenerator@example.org");
        }
    }
}

TEST_F(AppMenusBoxes, MenuBarCarriesBothEntries) {
    QMainWindow window;
    AppMenus::install(window);
    std::map<QString, QAction*> actions;
    for (QAction* action : window.menuBar()->findChildren<QAction*>()) {
        actions[action->text()] = action;
    }
    ASSERT_TRUE(actions.contains("About KorvaneGenerator"));
    ASSERT_TRUE(actions.contains("KorvaneGenerator Help"));
    EXPECT_EQ(actions["About KorvaneGenerator"]->menuRole(), QAction::AboutRole);
    EXPECT_EQ(actions["KorvaneGenerator Help"]->shortcut(), QKeySequence("Ctrl+Shift+?"));
}

} // namespace
} // namespace korvane
