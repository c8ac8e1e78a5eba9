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

USBControllerMap xhc(std::vector<USBPortMap> ports) {
    return makeController("XHC", 0x8086, 0xa36d, std::move(ports));
}

class USBPortEditRowTest : public ViewFixture {
  protected:
    // The row of the controller's first port, after a scan that shows them.
    USBPortEditRow& rowFor(std::vector<USBPortMap> ports) {
        controller = xhc(std::move(ports));
        scanShowing({controller});
        row = std::make_unique<USBPortEditRow>(model, controller, controller.ports[0]);
        return *row;
    }
    void pick(const QString& label) { ViewFixture::pick(*row->connectorMenu(), label); }
    int deviceAlpha() const { return row->deviceLabel()->palette().color(QPalette::WindowText).alpha(); }

    USBControllerMap controller;
    std::unique_ptr<USBPortEditRow> row;
};

// The device, or dimmed a placeholder or the last device seen; where the
// connector came from, which a pick of another type makes the user's; the
// place when there is one.
TEST_F(USBPortEditRowTest, ShowsTheDeviceTheConnectorsSourceAndThePlace) {
    USBPortMap port = makePort("HS01", 1, "", 9);
    port.connectorSource = ConnectorSource::firmware;
    port.place = portPlaceFromWords("back", "center", "left", false, false);
    rowFor({port});
    EXPECT_EQ(row->deviceLabel()->text(), "No active device");
    EXPECT_EQ(deviceAlpha(), 140);
    EXPECT_EQ(row->sourceLabel()->text(), "firmware");
    EXPECT_TRUE(row->connectorMenu()->toolTip().contains("ACPI _UPC"));
    EXPECT_EQ(row->connectorMenu()->accessibleDescription(), row->connectorMenu()->toolTip())
        << "the keyboard's way to the mark, which takes no focus";
    EXPECT_EQ(row->placeLabel()->text(), "back panel, left");
    pick("USB3");
    EXPECT_EQ(row->sourceLabel()->text(), "user");
    pick("Type-C+Sw");
    const auto overrides = model->connectorOverrides();
    EXPECT_TRUE(overrides.size() == 1 && overrides.begin()->second == 9)
        << "a pick of the scanned type is kept";

    rowFor({makePort("HS02", 2, "Apple Keyboard (Hub port 2)")});
    EXPECT_EQ(row->deviceLabel()->text(), "Apple Keyboard (Hub port 2)");
    EXPECT_EQ(deviceAlpha(), 255);
    EXPECT_FALSE(row->deviceLabel()->wordWrap());
    EXPECT_EQ(row->sourceLabel()->text(), "inferred");
    EXPECT_TRUE(row->placeLabel()->isHidden());

    controller.ports[0].activeDevice.clear();
    rescan({controller});
    row->setPort(controller, controller.ports[0]);
    EXPECT_EQ(row->deviceLabel()->text(), "seen: Apple Keyboard (Hub port 2), 14:03")
        << "named after it left";
    EXPECT_EQ(deviceAlpha(), 140);

    // An unnamed code shows until the user picks a named one.
    rowFor({makePort("HS01", 1, "", 7)});
    EXPECT_EQ(row->connectorMenu()->currentText(), "Other (7)");
    EXPECT_TRUE(model->connectorOverrides().empty()) << "showing it writes nothing";
    pick("USB2");
    EXPECT_EQ(model->connectorFor(controller, controller.ports[0]), 0);
    EXPECT_EQ(row->connectorMenu()->count(), 5) << "the extra entry goes once a named code is chosen";
}

// Each key reaches the model; one that breaks its rule is taken back.
TEST_F(USBPortEditRowTest, TheNicknameReachesTheModelAndAPastedControlCharacterIsTakenBack) {
    rowFor({makePort("HS01", 1, "")});
    QTest::keyClicks(row->nicknameField(), "rear");
    EXPECT_EQ(model->nicknameFor(controller, controller.ports[0]), "rear");
    QGuiApplication::clipboard()->setText(QString("\x1b[2J"));
    row->nicknameField()->paste();
    EXPECT_EQ(row->nicknameField()->text(), "rear");
    EXPECT_EQ(model->nicknameFor(controller, controller.ports[0]), "rear");
}

TEST_F(USBPortEditRowTest, ACompanionShowsBesideThePortIsOfferedOnCheckingAndCanShareTheType) {
    auto ports = std::vector{makePort("HS01", 1), makePort("SS01", 17)};
    ports[0].companionKey = usbPortStableID(xhc(ports), ports[1]);
    rowFor(ports);
    USBPortEditRow lonely(model, controller, controller.ports[1]);
    EXPECT_EQ(row->companionButton()->text(), "with SS01");
    EXPECT_TRUE(lonely.companionButton()->isHidden());
    EXPECT_TRUE(row->companionOffer()->isHidden());

    row->checkbox()->click();
    EXPECT_TRUE(model->isPortSelected(controller, controller.ports[0]));
    EXPECT_EQ(row->companionOffer()->text(), "Chec&k SS01 too");
    EXPECT_FALSE(row->companionOffer()->isHidden());
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
