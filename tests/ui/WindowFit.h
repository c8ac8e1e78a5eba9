#pragma once

#include "ViewFixture.h"
#include "ui/AppMenus.h"
#include "ui/ContentView.h"
#include "ui/ControllerList.h"
#include "ui/KorvaneGeneratorApp.h"
#include "ui/OutcomePanel.h"
#include "ui/TargetModelField.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QMainWindow>
#include <QMenuBar>
#include <QPushButton>
#include <gmock/gmock.h>

namespace korvane {

// The window as the application makes it, at its smallest, on a screen of
// `points` (its pixels over its scale): it fits with room for a title bar and
// a desktop's bar, and every control of the content is inside it, with the
// log closed and open.
inline void expectWindowFitsScreen(const std::shared_ptr<CollectorModel>& model, QSize points) {
    constexpr int titleAndDesktopBars = 64;
    QMainWindow window;
    auto* content = new ContentView(model, QIcon());
    window.setCentralWidget(content);
    AppMenus::install(window);
    content->setMinimumSize(KorvaneGeneratorApp::minimumWidth, KorvaneGeneratorApp::minimumHeight);
    const int menuHeight = window.menuBar()->sizeHint().height();
    const QSize first =
        KorvaneGeneratorApp::firstSize(points - QSize(0, titleAndDesktopBars - 40), menuHeight);
    window.resize(first);
    window.show();
    QApplication::processEvents();
    for (const bool isLogOpen : {false, true}) {
        if (isLogOpen) {
            content->parts().outcome->logToggle()->click();
        }
        window.resize(window.minimumSizeHint().expandedTo(window.minimumSize()));
        QApplication::processEvents();
        const QSize smallest = window.size();
        EXPECT_LE(smallest.width(), points.width()) << "log open: " << isLogOpen;
        EXPECT_LE(smallest.height() + titleAndDesktopBars, points.height()) << "log open: " << isLogOpen;
        std::vector<QWidget*> controls{content->parts().targetModel->menu()};
        for (QAbstractButton* button : content->findChildren<QAbstractButton*>()) {
            controls.push_back(button);
        }
        for (QWidget* control : controls) {
            const QRect shown(control->mapTo(&window, QPoint()), control->size());
            const auto* button = qobject_cast<QAbstractButton*>(control);
            EXPECT_TRUE(!control->isVisibleTo(content) || content->parts().list->isAncestorOf(control) ||
                        window.rect().contains(shown))
                << (button ? button->text() : control->accessibleName()).toStdString() << " at " << shown.x()
                << "," << shown.y() << " in " << smallest.width() << "x" << smallest.height()
                << ", log open: " << isLogOpen;
        }
    }
    // The first size leaves the bars their room wherever the smallest does.
    EXPECT_LE(first.height() + titleAndDesktopBars - 40, points.height());
}

} // namespace korvane
