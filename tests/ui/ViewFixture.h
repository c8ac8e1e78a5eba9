#pragma once

#include "support/ModelFixture.h"

#include <QApplication>
#include <QComboBox>

namespace korvane {

// The model's fixture for widget tests: skips where there is no Qt platform
// to make widgets on, and lets the widgets see each change.
class ViewFixture : public ModelFixture {
  public:
    void SetUp() override {
        if (!qApp) {
            GTEST_SKIP() << "no Qt platform: run under ctest, which sets QT_QPA_PLATFORM=offscreen";
        }
        ModelFixture::SetUp();
    }

    void scanShowing(std::vector<USBControllerMap> controllers) {
        ModelFixture::scanShowing(std::move(controllers));
        QApplication::processEvents();
    }

    // What a user's pick in a connector menu does.
    static void pick(QComboBox& menu, const QString& label) {
        const int index = menu.findText(label);
        ASSERT_GE(index, 0) << label.toStdString();
        menu.setCurrentIndex(index);
        emit menu.activated(index);
    }
};

} // namespace korvane
