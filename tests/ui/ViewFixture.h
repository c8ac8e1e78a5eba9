#pragma once

#include "support/ModelFixture.h"
#include "ui/ContentView.h"

#include <QApplication>
#include <QComboBox>
#include <fstream>

namespace korvane {

// The model's fixture for widget tests: lets the widgets see each change.
class ViewFixture : public ModelFixture {
  public:
    void scanShowing(std::vector<USBControllerMap> controllers) {
        ModelFixture::scanShowing(std::move(controllers));
        QApplication::processEvents();
    }

    // A silent rescan that finds `controllers`, as a device's arrival gives.
    void rescan(std::vector<USBControllerMap> controllers) {
        scans.push_back({std::move(controllers)});
        model->refreshActiveUSBDevices();
        settle();
    }
    void settle() {
        scheduler.runUntilIdle();
        QApplication::processEvents();
    }

    // The window's content at its default size, for the tests that want one.
    void makeView() {
        view = std::make_unique<ContentView>(model, QIcon());
        view->resize(900, 680);
    }
    void showActive() {
        view->show();
        QApplication::setActiveWindow(view.get());
        QApplication::processEvents();
    }

    // A file where the Desktop should be: no run can make its work folder.
    void makeDesktopAFile() {
        std::filesystem::remove_all(desktopFolder);
        std::ofstream(desktopFolder) << "not a folder";
    }

    // What a user's pick in a connector menu does.
    static void pick(QComboBox& menu, const QString& label) {
        const int index = menu.findText(label);
        ASSERT_GE(index, 0) << label.toStdString();
        menu.setCurrentIndex(index);
        emit menu.activated(index);
    }

    std::unique_ptr<ContentView> view;
};

} // namespace korvane
