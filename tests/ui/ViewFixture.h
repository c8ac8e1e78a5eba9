#pragma once

#include "support/ModelFixture.h"

#include <QApplication>

namespace korvane {

// The model's fixture for widget tests: lets the widgets see each change.
class ViewFixture : public ModelFixture {
  public:
    void scanShowing(std::vector<USBControllerMap> controllers) {
        ModelFixture::scanShowing(std::move(controllers));
        QApplication::processEvents();
    }
};

} // namespace korvane
