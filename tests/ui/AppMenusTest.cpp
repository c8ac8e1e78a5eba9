#include "ui/AppMenus.h"

#include <QAbstractButton>
#include <QApplication>
#include <QMessageBox>
#include <algorithm>
#include <gtest/gtest.h>

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
}

} // namespace
} // namespace korvane
