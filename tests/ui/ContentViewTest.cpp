#include "ui/ContentView.h"

#include "ViewFixture.h"
#include "ui/ControllerList.h"
#include "ui/ControllerSection.h"
#include "ui/StatusBadge.h"
#include "ui/USBPortEditRow.h"

#include <QCheckBox>
#include <QLabel>
#include <QPushButton>
#include <QScrollBar>
#include <fstream>
#include <gmock/gmock.h>

namespace korvane {
namespace {

using testing::ElementsAre;

USBControllerMap intelXHC(std::vector<USBPortMap> ports) {
    return makeController("XHC", 0x8086, 0xa36d, std::move(ports),
                          "Cannon Lake PCH USB 3.1 xHCI Host Controller");
}

class ContentViewTest : public ViewFixture {
  public:
    void SetUp() override {
        ViewFixture::SetUp();
        view = std::make_unique<ContentView>(model, QIcon());
        view->resize(900, 680);
    }
    void TearDown() override { view.reset(); }

    const ContentView::Parts& parts() const { return view->parts(); }
    std::vector<ControllerSection*> sections() const { return parts().list->sections(); }
    bool isListShown() const { return parts().list->isVisibleTo(view.get()); }

    std::unique_ptr<ContentView> view;
    const std::vector<USBControllerMap> twoControllers{intelXHC(makePorts(4, 1)),
                                                       makeController("XHC2", 0x1b73, 0x1100, makePorts(2))};
};

// Which controls are enabled in each state of the model the window can meet,
// as a row of flags: Reset Ports, Update IDs, Select All, Deselect All,
// Generate, Open ZIP and Donate; then the two labels that change and the badge.
TEST_F(ContentViewTest, ControlsFollowTheModelsState) {
    const std::tuple<const char*, std::function<void()>, const char*, const char*> states[] = {
        {"no controllers", [&] { scanShowing({}); }, "1100101", "Reset Ports|Update IDs|Ready"},
        {"loaded", [&] { scanShowing(twoControllers); }, "1111101", "Reset Ports|Update IDs|Ready"},
        // silent, but the label still says so
        {"scanning", [&] { model->refreshActiveUSBDevices(); }, "0011101", "Resetting...|Update IDs|Ready"},
        {"updating",
         [&] {
             scheduler.runUntilIdle();
             model->updateIDsDatabases();
         },
         "0011101", "Reset Ports|Updating IDs...|Ready"},
        {"running",
         [&] {
             scheduler.runUntilIdle();
             model->startCollection();
         },
         "0000000", "Reset Ports|Update IDs|Running"},
        {"completed", [&] { scheduler.runUntilIdle(); }, "1111111", "Reset Ports|Update IDs|Completed"},
        {"failed",
         [&] {
             // A file where the Desktop should be: the work folder can't be made.
             std::filesystem::remove_all(desktopFolder);
             std::ofstream(desktopFolder) << "not a folder";
             model->startCollection();
             scheduler.runUntilIdle();
         },
         "1111101", "Reset Ports|Update IDs|Ready"},
    };
    for (const auto& [name, enter, enabled, labels] : states) {
        enter();
        const auto& p = parts();
        std::string flags;
        for (const QPushButton* button :
             {p.resetPorts, p.updateIDs, p.selectAll, p.deselectAll, p.generate, p.openZip, p.donate}) {
            flags += button->isEnabled() ? '1' : '0';
        }
        EXPECT_EQ(flags, enabled) << name;
        EXPECT_EQ((p.resetPorts->text() + "|" + p.updateIDs->text() + "|" + p.badge->text()).toStdString(),
                  labels)
            << name;
    }
}

TEST_F(ContentViewTest, FirstAppearanceStartsTheModelOnce) {
    EXPECT_FALSE(isListShown());
    view->show();
    EXPECT_TRUE(model->isScanningUSB()) << "the first scan starts with the window";
    EXPECT_THAT(model->logText(), testing::HasSubstr("App started."));
    scans.push_back({twoControllers});
    scheduler.runUntilIdle();
    EXPECT_TRUE(isListShown());
    view->hide();
    view->show();
    EXPECT_FALSE(model->isScanningUSB()) << "showing the window again starts nothing";
}

TEST_F(ContentViewTest, CounterCountsStaleKeysToo) {
    scanShowing(
        {intelXHC({makePort("HS01", 1, "Keyboard"), makePort("HS02", 2, "Mouse"), makePort("HS03", 3)})});
    EXPECT_EQ(parts().counter->text(), "2/3 selected");
    // HS02 and HS03 vanish; HS02's key stays selected.
    scans.push_back({{intelXHC({makePort("HS01", 1, "Keyboard")})}});
    model->refreshActiveUSBDevices();
    scheduler.runUntilIdle();
    EXPECT_EQ(parts().counter->text(), "2/1 selected");
    parts().deselectAll->click();
    EXPECT_EQ(parts().counter->text(), "0/1 selected");
}

TEST_F(ContentViewTest, SectionsOpenAfterEachChangeOfTheControllerList) {
    const auto a = intelXHC(makePorts(2));
    const auto b = makeController("XHC2", 0x1b73, 0x1100, makePorts(1));
    const auto c = makeController("XHC3", 0x1912, 0x0015, makePorts(1));
    auto openStates = [this] {
        std::vector<bool> open;
        for (auto* section : sections()) {
            open.push_back(section->isOpen());
        }
        return open;
    };

    scanShowing({a, b});
    EXPECT_THAT(openStates(), ElementsAre(true, true)) << "after the first scan every section is open";
    sections()[0]->header()->click();
    scanShowing({a, b});
    EXPECT_THAT(openStates(), ElementsAre(false, true)) << "the same list keeps the user's choice";
    scanShowing({a, b, c});
    EXPECT_THAT(openStates(), ElementsAre(true, true, true)) << "a new controller opens them all";
    sections()[2]->header()->click();
    scanShowing({a, b});
    scanShowing({a, b, c});
    EXPECT_THAT(openStates(), ElementsAre(true, true, true)) << "a returning controller opens again";
}

TEST_F(ContentViewTest, RescanUpdatesTheShownWidgetsInPlace) {
    std::vector<USBControllerMap> list;
    for (int i = 0; i < 4; ++i) {
        list.push_back(makeController("XHC" + std::to_string(i), 0x8086, 0x1000 + i, makePorts(25)));
    }
    scanShowing(list);
    view->show();
    QApplication::processEvents();
    QScrollBar* scroll = parts().list->verticalScrollBar();
    ASSERT_GT(scroll->maximum(), 0);
    scroll->setValue(scroll->maximum() / 2);
    const int position = scroll->value();
    const auto before = sections();
    USBPortEditRow* row = before[3]->rows()[24];

    list[3].ports[24].activeDevice = "Flash Drive";
    scans.push_back({list});
    model->refreshActiveUSBDevices();
    scheduler.runUntilIdle();
    QApplication::processEvents();

    EXPECT_EQ(sections(), before) << "no section was rebuilt";
    EXPECT_EQ(before[3]->rows()[24], row);
    EXPECT_EQ(row->deviceLabel()->text(), "Flash Drive");
    EXPECT_TRUE(row->checkbox()->isChecked());
    EXPECT_EQ(scroll->value(), position) << "the list didn't jump";
}

TEST_F(ContentViewTest, PortLimitAlertStandsOnceAndOKOnlyDismisses) {
    scanShowing({intelXHC(makePorts(16))});
    parts().selectAll->click();
    ASSERT_TRUE(model->showPortLimitWarning());
    model->setConnector(model->scannedControllers()[0], model->scannedControllers()[0].ports[0], 0);
    QApplication::processEvents();

    QMessageBox* alert = view->portLimitAlert();
    ASSERT_NE(alert, nullptr);
    EXPECT_EQ(view->findChildren<QMessageBox*>().size(), 1) << "one alert for two notifications";
    ASSERT_EQ(alert->buttons().size(), 1) << "OK alone";

    alert->buttons()[0]->click();
    QApplication::processEvents();
    EXPECT_FALSE(model->showPortLimitWarning());
    EXPECT_EQ(model->selectedPortIDs().size(), 16u) << "the selection stays";
}

} // namespace
} // namespace korvane
