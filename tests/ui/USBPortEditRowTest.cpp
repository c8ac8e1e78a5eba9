#include "ui/USBPortEditRow.h"

#include "ViewFixture.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>

namespace korvane {
namespace {

class USBPortEditRowTest : public ViewFixture {
  protected:
    // The row of the controller's first port, after a scan that shows it.
    USBPortEditRow& rowFor(USBPortMap port) {
        controller = makeController("XHC", 0x8086, 0xa36d, {std::move(port)});
        scanShowing({controller});
        row = std::make_unique<USBPortEditRow>(model, controller, controller.ports[0]);
        return *row;
    }
    // What a user's pick in the connector menu does.
    void pick(const QString& label) {
        const int index = row->connectorMenu()->findText(label);
        ASSERT_GE(index, 0) << label.toStdString();
        row->connectorMenu()->setCurrentIndex(index);
        emit row->connectorMenu()->activated(index);
    }

    USBControllerMap controller;
    std::unique_ptr<USBPortEditRow> row;
};

TEST_F(USBPortEditRowTest, ShowsTheDeviceOrADimmedPlaceholder) {
    struct Case {
        std::string device;
        QString shown;
        int alpha;
    };
    for (const Case& c : {Case{"", "No active device", 140},
                          Case{"Apple Keyboard (Hub port 2)", "Apple Keyboard (Hub port 2)", 255}}) {
        SCOPED_TRACE(c.device);
        USBPortEditRow& shown = rowFor(makePort("HS01", 1, c.device));
        EXPECT_EQ(shown.deviceLabel()->text(), c.shown);
        EXPECT_EQ(shown.deviceLabel()->palette().color(QPalette::WindowText).alpha(), c.alpha);
        EXPECT_FALSE(shown.deviceLabel()->wordWrap());
    }
}

TEST_F(USBPortEditRowTest, TheCheckboxAndAPickReachTheModelAndAPickOfTheScannedValueStays) {
    rowFor(makePort("HS01", 1, "", 3));
    EXPECT_EQ(row->connectorMenu()->count(), 5);
    row->checkbox()->click();
    EXPECT_TRUE(model->isPortSelected(controller, controller.ports[0]));
    pick("Internal");
    pick("USB3");
    model->refreshActiveUSBDevices();
    scheduler.runUntilIdle();
    const auto key = usbPortStableID(controller, controller.ports[0]);
    ASSERT_TRUE(model->connectorOverrides().contains(key));
    EXPECT_EQ(model->connectorOverrides().at(key), 3);
}

TEST_F(USBPortEditRowTest, UnnamedConnectorShowsUntilTheUserPicks) {
    rowFor(makePort("HS01", 1, "", 7));
    EXPECT_EQ(row->connectorMenu()->currentText(), "Other (7)");
    EXPECT_TRUE(model->connectorOverrides().empty()) << "showing it writes nothing";
    pick("USB2");
    EXPECT_EQ(model->connectorFor(controller, controller.ports[0]), 0);
    EXPECT_EQ(row->connectorMenu()->count(), 5) << "the extra entry goes once a named code is chosen";
}

} // namespace
} // namespace korvane
