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
        std::vector<QWidget*> controls;
        for (QWidget* control : content->findChildren<QAbstractButton*>()) {
            controls.push_back(control);
        }
        controls.push_back(content->parts().targetModel->menu());
        for (QWidget* control : controls) {
            if (!control->isVisibleTo(content) || content->parts().list->isAncestorOf(control)) {
                continue;
            }
            const QRect shown(control->mapTo(&window, QPoint()), control->size());
            EXPECT_TRUE(window.rect().contains(shown))
                << control->accessibleName().toStdString() << " "
                << (qobject_cast<QAbstractButton*>(control) ? qobject_cast<QAbstractButton*>(control)->text()
                                                            : QString())
                       .toStdString()
                << " at " << shown.x() << "," << shown.y() << " in " << smallest.width() << "x"
                << smallest.height() << ", log open: " << isLogOpen;
        }
    }
    // The first size leaves the bars their room wherever the smallest does.
    EXPECT_LE(first.height() + titleAndDesktopBars - 40, points.height());
}

} // namespace korvane
