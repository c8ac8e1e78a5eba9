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

struct AboutCase {
    const char* name;
    QVariantMap info;
    const char* firstLine;
};

class AppMenusAbout : public testing::TestWithParam<AboutCase> {};

TEST_P(AppMenusAbout, VersionLine) {
    const QString text = AppMenus::aboutText(GetParam().info);
    EXPECT_EQ(text.section('\n', 0, 0), GetParam().firstLine);
}

INSTANTIATE_TEST_SUITE_P(
    Bundles, AppMenusAbout,
    testing::Values(AboutCase{"Texts",
                              {{"CFBundleShortVersionString", "2.3"}, {"CFBundleVersion", "41"}},
                              "KorvaneGenerator v2.3 (41)"},
                    AboutCase{"Missing", {}, "KorvaneGenerator v1.0 (1)"},
                    AboutCase{"Numbers",
                              {{"CFBundleShortVersionString", 2.3}, {"CFBundleVersion", 41}},
                              "KorvaneGenerator v1.0 (1)"}),
    [](const testing::TestParamInfo<AboutCase>& row) { return std::string(row.param.name); });

TEST(AppMenusTest, AboutTextHasTheMakerAndThePromise) {
    const QStringList lines = AppMenus::aboutText({}).split('\n');
    ASSERT_EQ(lines.size(), 6);
    EXPECT_TRUE(lines[1].isEmpty());
    EXPECT_EQ(lines[2], "KorvaneGenerator project");
    EXPECT_EQ(lines[3], "korvanegenerator@example.org");
    EXPECT_TRUE(lines[4].isEmpty());
    EXPECT_TRUE(lines[5].startsWith("Creates a standalone Korvane.kext package"));
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

TEST_F(AppMenusBoxes, HelpHasItsTextAndOneButton) {
    auto box = AppMenus::makeHelpBox();
    EXPECT_EQ(box->text(), "KorvaneGenerator Help");
    EXPECT_TRUE(
        box->informativeText().startsWith("KorvaneGenerator generates Korvane.kext from live IOKit USB"));
    EXPECT_TRUE(box->informativeText().endsWith("and does not require a saved .ioreg file."));
    EXPECT_EQ(buttonTexts(*box), QStringList{"OK"});
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
