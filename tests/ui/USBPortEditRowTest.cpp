#include "ui/USBPortEditRow.h"

#include "ViewFixture.h"

#include <QAction>
#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QGuiApplication>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <QToolButton>

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

TEST_F(USBPortEditRowTest, TheNicknameReachesTheModelAndTheLastDeviceStaysNamedAfterItLeft) {
    rowFor(makePort("HS01", 1, "SanDisk Ultra"));
    row->nicknameField()->setText("rear, blue, top");
    emit row->nicknameField()->textEdited("rear, blue, top"); // as typing does, the focus still there
    EXPECT_EQ(model->nicknameFor(controller, controller.ports[0]), "rear, blue, top");

    controller.ports[0].activeDevice.clear();
    scans.push_back({{controller}});
    model->refreshActiveUSBDevices();
    scheduler.runUntilIdle();
    row->setPort(controller, controller.ports[0]);
    EXPECT_EQ(row->deviceLabel()->text(), "seen: SanDisk Ultra, 14:03");
    EXPECT_EQ(row->deviceLabel()->palette().color(QPalette::WindowText).alpha(), 140) << "dimmed";
}

TEST_F(USBPortEditRowTest, APastedControlCharacterIsTakenBackAndNeverReachesTheModel) {
    rowFor(makePort("HS01", 1, ""));
    QTest::keyClicks(row->nicknameField(), "rear");
    QGuiApplication::clipboard()->setText(QString("\x1b[2J"));
    row->nicknameField()->paste();
    EXPECT_EQ(row->nicknameField()->text(), "rear");
    EXPECT_EQ(model->nicknameFor(controller, controller.ports[0]), "rear");
}

TEST_F(USBPortEditRowTest, MarksWhereTheConnectorCameFromAndShowsThePlaceWhenThereIsOne) {
    USBPortMap port = makePort("HS01", 1, "", 9);
    port.connectorSource = ConnectorSource::firmware;
    port.place = portPlaceFromWords("back", "center", "left", false, false);
    rowFor(port);
    EXPECT_EQ(row->sourceLabel()->text(), "firmware");
    EXPECT_TRUE(row->connectorMenu()->toolTip().contains("ACPI _UPC"));
    EXPECT_EQ(row->connectorMenu()->accessibleDescription(), row->connectorMenu()->toolTip())
        << "the keyboard's way to the mark, which takes no focus";
    EXPECT_EQ(row->placeLabel()->text(), "back panel, left");
    pick("USB3");
    EXPECT_EQ(row->sourceLabel()->text(), "user") << "a pick of another type is no longer the firmware's";

    rowFor(makePort("HS02", 2));
    EXPECT_EQ(row->sourceLabel()->text(), "inferred");
    EXPECT_TRUE(row->placeLabel()->isHidden());
}

TEST_F(USBPortEditRowTest, UnnamedConnectorShowsUntilTheUserPicks) {
    rowFor(makePort("HS01", 1, "", 7));
    EXPECT_EQ(row->connectorMenu()->currentText(), "Other (7)");
    EXPECT_TRUE(model->connectorOverrides().empty()) << "showing it writes nothing";
    pick("USB2");
    EXPECT_EQ(model->connectorFor(controller, controller.ports[0]), 0);
    EXPECT_EQ(row->connectorMenu()->count(), 5) << "the extra entry goes once a named code is chosen";
}

TEST_F(USBPortEditRowTest, ACompanionShowsBesideThePortIsOfferedOnCheckingAndCanShareTheType) {
    controller = makeController("XHC", 0x8086, 0xa36d, {makePort("HS01", 1), makePort("SS01", 17)});
    controller.ports[0].companionKey = usbPortStableID(controller, controller.ports[1]);
    scanShowing({controller});
    row = std::make_unique<USBPortEditRow>(model, controller, controller.ports[0]);
    USBPortEditRow lonely(model, controller, controller.ports[1]);
    EXPECT_EQ(row->companionButton()->text(), "with SS01");
    EXPECT_TRUE(lonely.companionButton()->isHidden());
    EXPECT_TRUE(row->companionOffer()->isHidden());

    row->checkbox()->click();
    EXPECT_FALSE(row->companionOffer()->isHidden());
    EXPECT_EQ(row->companionOffer()->text(), "Chec&k SS01 too");
    row->companionOffer()->click();
    EXPECT_TRUE(model->isPortSelected(controller, controller.ports[1]));
    EXPECT_TRUE(row->companionOffer()->isHidden());

    row->sameTypeAction()->trigger();
    pick("Type-C");
    EXPECT_EQ(model->connectorFor(controller, controller.ports[1]), 10);
    EXPECT_TRUE(row->sameTypeAction()->isChecked());
}

} // namespace
} // namespace korvane
