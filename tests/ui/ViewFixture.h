#pragma once

#include "support/ModelFixture.h"

#include <QApplication>
#include <QComboBox>

namespace korvane {

// The model's fixture for widget tests: lets the widgets see each change.
class ViewFixture : public ModelFixture {
  public:
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
