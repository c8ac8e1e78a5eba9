#include "ui/ContentView.h"

#include "ViewFixture.h"
#include "records/PortPlace.h"
#include "ui/ControllerList.h"
#include "ui/ControllerSection.h"
#include "ui/OutcomePanel.h"
#include "ui/StatusBadge.h"
#include "ui/TargetModelField.h"
#include "ui/USBPortEditRow.h"
#include "ui/WindowStyle.h"

#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QLabel>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScrollBar>
#include <QTest>
#include <QTimer>
#include <QWheelEvent>
#include <QWindow>
#include <QtTest/qtestspontaneevent.h>
#include <algorithm>
#include <gmock/gmock.h>
#include <iterator>

namespace korvane {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

USBControllerMap intelXHC(std::vector<USBPortMap> ports) {
    return makeController("XHC", 0x8086, 0xa36d, std::move(ports),
                          "Cannon Lake PCH USB 3.1 xHCI Host Controller");
}

class ContentViewTest : public ViewFixture {
  public:
    void SetUp() override {
        ViewFixture::SetUp();
        makeView();
    }

    const ContentView::Parts& parts() const { return view->parts(); }
    // A button's label as shown, without its mnemonic's marker.
    static QString shown(const QPushButton& button) { return QString(button.text()).remove('&'); }
    std::vector<ControllerSection*> sections() const { return parts().list->sections(); }
    bool isShown(const QWidget* widget) const { return widget->isVisibleTo(view.get()); }

    const std::vector<USBControllerMap> twoControllers{intelXHC(makePorts(4, 1)),
                                                       makeController("XHC2", 0x1b73, 0x1100, makePorts(2))};
};

// Which controls are enabled in each state of the model the window can meet,
// as a row of flags: Reset Ports, Update IDs, Select All, Deselect All,
// Generate, Open ZIP and Donate; then the two labels that change and the
// badge; then the scan's notices above the list, which stand until a scan
// has none, and the outcome line under the action row, the last action's only.
TEST_F(ContentViewTest, ControlsAndOutcomesFollowTheModelsState) {
    const std::string noNetwork =
        "pci.ids update failed: Could not resolve host | usb.ids update failed: Could not resolve host";
    const std::string notADirectory =
        "ERROR: " + (desktopFolder / "KorvaneGenerator_Work").string() + ": Not a directory";
    const std::string ready = "1111101|Reset Ports|Update IDs|Ready";
    const std::string failed = "1111101|Reset Ports|Update IDs|Failed|";
    const std::string running = "0000000|Reset Ports|Update IDs|Running";
    const std::string completed = "1111111|Reset Ports|Update IDs|Completed";
    // The steps that lead from one state to the next.
    using Step = std::function<void()>;
    const auto& p = parts();
    auto click = [](QPushButton* button) -> Step { return [button] { button->click(); }; };
    const Step idle = [this] { scheduler.runUntilIdle(); };
    const Step start = [this] { model->startCollection(); };
    const Step scanNone = [this] { scanShowing({}); };
    const Step scanTwo = [this] { scanShowing(twoControllers); };
    const Step scanNoticing = [this] {
        scans.push_back({twoControllers, {"Connector types from the firmware need root."}});
        model->scanUSBPorts();
        settle();
    };
    const Step refresh = [this] { model->refreshActiveUSBDevices(); };
    const Step update = [this] { model->updateIDsDatabases(); };
    const Step removeZip = [this] { std::filesystem::remove(*model->lastZipURL()); };
    const Step desktopIsAFile = [this] { makeDesktopAFile(); };
    const Step pickInternal = [this] { pick(*sections()[0]->rows()[0]->connectorMenu(), "Internal"); };
    const std::string zipGone =
        "Open ZIP found nothing: " + (desktopFolder / "Korvane.zip").string() + " was moved or deleted.";
    const std::tuple<const char*, std::vector<Step>, std::string> states[] = {
        {"no controllers", {scanNone}, "1100001|Reset Ports|Update IDs|Ready"},
        {"notices", {scanNoticing}, ready + "|Connector types from the firmware need root."},
        {"loaded", {scanTwo}, ready},
        // silent, but the label still says so
        {"scanning", {refresh}, "0011101|Resetting...|Update IDs|Ready"},
        {"updating", {idle, update}, "0011101|Reset Ports|Updating IDs...|Ready"},
        {"running", {idle, start}, running},
        {"completed", {idle}, completed},
        {"ZIP gone", {removeZip, click(p.openZip)}, completed + "|" + zipGone},
        {"failed", {desktopIsAFile, start, idle}, failed + notADirectory},
        {"ids update", {click(p.updateIDs), idle}, failed + noNetwork},
        // The selection the run failed on is gone: a run would write something else.
        {"selection changed", {click(p.selectAll)}, ready},
        {"failed again", {start, idle}, failed + notADirectory},
        {"connector changed", {pickInternal}, ready + "|" + notADirectory},
        {"next run", {start}, running},
    };
    for (const auto& [name, steps, expected] : states) {
        for (const auto& step : steps) {
            step();
        }
        QString flags;
        for (const QPushButton* button :
             {p.resetPorts, p.updateIDs, p.selectAll, p.deselectAll, p.generate, p.openZip, p.donate}) {
            flags += button->isEnabled() ? '1' : '0';
        }
        QStringList shownState{flags, shown(*p.resetPorts), shown(*p.updateIDs), p.badge->text()};
        for (const QLabel* line : {p.scanNotices, p.outcome->runError(), p.outcome->idsUpdateResult(),
                                   p.outcome->openZipProblem()}) {
            if (isShown(line)) {
                shownState << line->text();
            }
        }
        EXPECT_EQ(shownState.join("|").toStdString(), expected) << name;
        if (p.badge->state() == StatusBadge::State::failed) {
            EXPECT_EQ(p.badge->dotColor(), WindowStyle(view->palette()).errorText()) << "failed in red";
        }
    }
}

TEST_F(ContentViewTest, RowsAndSectionsStayLiveDuringARunAndItsZipCanBeShown) {
    scanShowing(twoControllers);
    model->startCollection();
    USBPortEditRow* row = sections()[0]->rows()[1];
    row->checkbox()->click();
    EXPECT_TRUE(model->isPortSelected(twoControllers[0], twoControllers[0].ports[1]));
    EXPECT_TRUE(row->connectorMenu()->isEnabled());
    sections()[1]->header()->click();
    EXPECT_FALSE(sections()[1]->isOpen());

    scheduler.runUntilIdle();
    parts().openZip->click();
    EXPECT_THAT(recordingDesktop.revealed, ElementsAre(*model->lastZipURL()));
    // This build names no donate page: no button, and nothing to open.
    EXPECT_TRUE(parts().donate->isHidden());
    model->openPayPalDonate("");
    EXPECT_TRUE(recordingDesktop.opened.empty());
}

// The counter and the rows follow each change of the model.
TEST_F(ContentViewTest, CounterCountsThisScansPortsAndKeptKeysApartAndRowsFollowTheModel) {
    scanShowing(
        {intelXHC({makePort("HS01", 1, "Keyboard"), makePort("HS02", 2, "Mouse"), makePort("HS03", 3)})});
    EXPECT_EQ(parts().counter->text(), "2/3 selected");
    rescan({intelXHC({makePort("HS01", 1, "Keyboard")})}); // HS02's key stays selected
    EXPECT_EQ(parts().counter->text(), "1/1 selected \u00B7 1 kept for ports not on this machine");
    parts().deselectAll->click();
    EXPECT_FALSE(sections()[0]->rows()[0]->checkbox()->isChecked());
}

TEST_F(ContentViewTest, SectionsOpenAfterEachChangeOfTheControllerList) {
    const auto xhc3 = makeController("XHC3", 0x1912, 0x0015, makePorts(1));
    auto openStates = [this] {
        std::vector<bool> open;
        std::ranges::transform(sections(), std::back_inserter(open), &ControllerSection::isOpen);
        return open;
    };
    scanShowing(twoControllers);
    EXPECT_THAT(openStates(), ElementsAre(true, true)) << "after the first scan every section is open";
    sections()[0]->header()->click();
    scanShowing(twoControllers);
    EXPECT_THAT(openStates(), ElementsAre(false, true)) << "the same list keeps the user's choice";
    scanShowing({twoControllers[0], twoControllers[1], xhc3});
    EXPECT_THAT(openStates(), ElementsAre(true, true, true)) << "a new controller opens them all";
}

// The wheel over the list scrolls it; a connector menu or the target model
// box that passes under the pointer changes only while it has the focus. A
// rescan updates the shown widgets in place, where the list stands.
TEST_F(ContentViewTest, TheWheelScrollsTheListAndARescanKeepsItsWidgetsAndPlace) {
    std::vector<USBControllerMap> list;
    for (int i = 0; i < 4; ++i) {
        list.push_back(makeController("XHC" + std::to_string(i), 0x8086, 0x1000 + i, makePorts(25)));
    }
    scanShowing(list);
    showActive();
    QScrollBar* scroll = parts().list->verticalScrollBar();
    // As a mouse's wheel arrives: at the window, which hands it to the widget
    // under the pointer, and on up to the parents while ignored.
    auto turn = [this](QWidget& under) {
        const QPointF at = under.mapTo(view.get(), under.rect().center());
        QWheelEvent wheel(at, view->mapToGlobal(at), QPoint(), QPoint(0, -120), Qt::NoButton, Qt::NoModifier,
                          Qt::NoScrollPhase, false);
        QSpontaneKeyEvent::setSpontaneous(&wheel);
        QApplication::sendEvent(view->windowHandle(), &wheel);
        QApplication::processEvents();
    };
    QComboBox& connector = *sections()[0]->rows()[2]->connectorMenu();
    parts().resetPorts->setFocus();
    const QString connectorBefore = connector.currentText();
    turn(connector);
    EXPECT_EQ(connector.currentText(), connectorBefore) << "unfocused menu";
    EXPECT_GT(scroll->value(), 0) << "the list scrolled instead";
    EXPECT_FALSE(connector.hasFocus()) << "the wheel gives no focus";
    turn(*parts().targetModel->menu());
    EXPECT_EQ(model->targetModelChoice(), "") << "unfocused model box";
    connector.setFocus();
    turn(connector);
    EXPECT_NE(connector.currentText(), connectorBefore) << "focused menu";

    scroll->setValue(scroll->maximum() / 2);
    const int position = scroll->value();
    const auto before = sections();
    USBPortEditRow* row = before[3]->rows()[24];
    list[3].ports[24].activeDevice = "Flash Drive";
    rescan(list);
    EXPECT_EQ(sections(), before) << "no section was rebuilt";
    EXPECT_EQ(before[3]->rows()[24], row);
    EXPECT_EQ(row->deviceLabel()->text(), "Flash Drive");
    EXPECT_TRUE(row->checkbox()->isChecked());
    EXPECT_EQ(scroll->value(), position) << "the list didn't jump";
}

// Reaching 15 ports on an Intel controller raises one alert, whose OK only
// dismisses; over 15 Generate asks, and only "Generate anyway" starts the run.
TEST_F(ContentViewTest, ThePortLimitRaisesOneAlertAndGenerateAsksBeforeARunOverIt) {
    scanShowing({intelXHC(makePorts(16))});
    parts().selectAll->click();
    model->setConnector(model->scannedControllers()[0], model->scannedControllers()[0].ports[0], 0);
    QApplication::processEvents();
    QMessageBox* alert = view->portLimitAlert();
    ASSERT_NE(alert, nullptr);
    EXPECT_EQ(view->findChildren<QMessageBox*>().size(), 1) << "one alert for two notifications";
    EXPECT_EQ(alert->text(), "USB Port Limit Warning");
    EXPECT_THAT(alert->informativeText().toStdString(),
                testing::StartsWith("This Intel XHC/XHCI controller has reached 15 selected USB ports."));
    ASSERT_EQ(alert->buttons().size(), 1);
    alert->buttons()[0]->click();
    QApplication::processEvents();
    EXPECT_FALSE(model->showPortLimitWarning());
    EXPECT_EQ(model->selectedPortIDs().size(), 16u) << "the selection stays";

    for (const QString answer : {"Cancel", "Generate anyway"}) {
        QString text;
        QTimer::singleShot(0, [&] {
            auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
            ASSERT_NE(box, nullptr);
            text = box->text();
            for (auto* button : box->buttons()) {
                if (button->text().remove('&') == answer) {
                    button->click();
                }
            }
        });
        parts().generate->click();
        EXPECT_THAT(text.toStdString(),
                    testing::StartsWith("XHC would be written with 16 ports, and macOS uses at most 15."));
        EXPECT_EQ(model->isRunning(), answer != "Cancel") << answer.toStdString();
    }
}

// What is typed is the choice; the warning stands while the model is "Mac"
// or not shaped like a Mac model, and like-named controllers are noted.
TEST_F(ContentViewTest, TheTargetModelFieldSetsTheChoiceAndWarnsWhereMacOSWouldIgnoreTheMap) {
    scanShowing({intelXHC(makePorts(1, 1)), makeController("XHC", 0x8086, 0x15e9, makePorts(1, 1))});
    QComboBox& field = *parts().targetModel->menu();
    const QString nowhere = "macOS applies this map only on a Mac of the model it names.";
    const std::tuple<QString, QString, QString> rows[] = {
        {std::string(65, 'M').c_str(), "no model found", nowhere}, // longer than SMBIOS holds: refused
        {"iMac19,1", "your choice", ""},
        {"Mac", "your choice", nowhere},
        {"My Mac", "your choice",
         "\u201CMy Mac\u201D isn't shaped like a Mac model (iMac19,1, MacBookPro15,2): macOS applies "
         "this map only on a Mac whose model is exactly this text."},
    };
    for (const auto& [typed, source, warning] : rows) {
        field.setEditText(typed);
        QApplication::processEvents();
        EXPECT_EQ(model->targetModelChoice(), typed.size() > 64 ? "" : typed.toStdString());
        EXPECT_EQ(parts().targetModel->sourceLabel()->text(), source) << typed.toStdString();
        EXPECT_EQ(parts().targetModelWarning->text(), warning) << typed.toStdString();
        EXPECT_EQ(isShown(parts().targetModelWarning), !warning.isEmpty());
    }
    EXPECT_THAT(parts().personalityNotes->text().toStdString(),
                HasSubstr("merge personality is named My Mac-XHC 8086_15E9"));
    view->setSettingsProblem("The target model can't be remembered for the next start: Not a directory");
    EXPECT_THAT(parts().targetModelWarning->text().toStdString(), testing::EndsWith("Not a directory"));
}

// Closed sections say it too; over the 15 ports macOS uses in bold, with the
// template's ports the scan didn't see.
TEST_F(ContentViewTest, EachSectionSaysWhatARunWouldWriteForIt) {
    scanShowing(twoControllers);
    const QLabel& first = *sections()[0]->contribution();
    EXPECT_EQ(first.text(), "1 port checked · 1 of 15");
    EXPECT_FALSE(first.font().bold());
    EXPECT_EQ(sections()[1]->contribution()->text(), "support personality only · 0 of 15");
    sections()[0]->header()->click();
    parts().deselectAll->click();
    // The note on the template's unseen ports is the port budget's own text.
    EXPECT_THAT(
        first.text().toStdString(),
        testing::StartsWith("no port checked: the built-in template's 24 ports will be written · 24 of "
                            "15\nXHC: nothing is checked"));
    EXPECT_TRUE(first.font().bold());
}

// The first showing starts the model, once. The keyboard starts at the first
// control once the first scan is in, and Tab walks the window as it reads:
// the editor's buttons, each section's header and rows, the action row, the
// log toggle, the footer.
TEST_F(ContentViewTest, TheFirstShowingStartsTheModelOnceAndTheKeyboardFollowsTheReadingOrder) {
    EXPECT_FALSE(isShown(parts().list));
    showActive();
    EXPECT_TRUE(model->isScanningUSB()) << "the first scan starts with the window";
    EXPECT_THAT(model->logText(), HasSubstr("App started."));
    scans.push_back({{intelXHC(makePorts(1, 1)), makeController("XHC2", 0x1b73, 0x1100, makePorts(1))}});
    settle();
    EXPECT_TRUE(isShown(parts().list));

    std::vector<std::string> visited;
    for (int step = 0; step < 16; ++step) {
        QWidget* focused = QApplication::focusWidget();
        const auto* button = qobject_cast<const QPushButton*>(focused);
        visited.push_back((button ? shown(*button) : focused->accessibleName()).toStdString());
        QTest::keyClick(focused, Qt::Key_Tab);
    }
    EXPECT_THAT(visited,
                ElementsAre("Reset Ports", "Update IDs", "Select All", "Deselect All", "XHC", "Selected",
                            "Connector", "Nickname", "XHC2", "Selected", "Connector", "Nickname",
                            "Generate Korvane.kext", "Map by plugging", "Target Mac model", "Log"));

    // Every button in sight has a mnemonic, and no two share one.
    QStringList keys;
    for (const QPushButton* button : view->findChildren<QPushButton*>()) {
        if (isShown(button)) {
            keys << QKeySequence::mnemonic(button->text()).toString();
        }
    }
    EXPECT_FALSE(keys.contains("")) << "a button without one";
    EXPECT_EQ(keys.removeDuplicates(), 0) << keys.join(" ").toStdString();
    view->hide();
    view->show();
    EXPECT_FALSE(model->isScanningUSB()) << "showing the window again starts nothing";
}

TEST_F(ContentViewTest, ResetPortsAsksBeforeItDropsAnOpenedMapsSelection) {
    scanShowing(twoControllers);
    QStringList questions;
    bool answer = false;
    view->confirmReset = [&](const QString& question) {
        questions << question;
        return answer;
    };
    parts().resetPorts->click(); // nothing of a map's to lose: no question
    scheduler.runUntilIdle();

    parts().selectAll->click();
    ASSERT_TRUE(model->saveMap(home.path() / "desk.korvanemap").succeeded);
    QApplication::processEvents();
    EXPECT_TRUE(isShown(parts().outcome->mapOutcome()));
    parts().resetPorts->click();
    EXPECT_EQ(questions.size(), 1) << "asked once, for the map's selection";
    EXPECT_FALSE(model->isScanningUSB()) << "kept";

    answer = true;
    parts().resetPorts->click();
    EXPECT_TRUE(model->isScanningUSB()) << "reset";
    settle();
    EXPECT_FALSE(isShown(parts().outcome->mapOutcome())) << "its outcome no longer holds";
}

// The header, the hint, the empty list and Generate's reason say what is true
// for the source the window shows.
TEST_F(ContentViewTest, TheTextsSayWhatIsTrueForTheSource) {
    using enum WindowSource::Kind;
    const std::tuple<WindowSource, const char*, const char*, const char*, const char*> rows[] = {
        {{liveLinux, {}}, "as Linux sees", "plugging one in", "Linux shows no", "was found"},
        {{liveMac, {}}, "this Mac's USB", "plugging one in", "this Mac's registry", "was found"},
        {{savedRegistry, "a.ioreg"}, "registry a.ioreg", "never changes", "a.ioreg lists", "registry lists"},
    };
    for (const auto& [source, subtitle, hint, empty, reason] : rows) {
        SCOPED_TRACE(subtitle);
        view = std::make_unique<ContentView>(model, QIcon());
        view->setSource(source);
        scanShowing({});
        EXPECT_THAT(view->subtitle()->text().toStdString(), HasSubstr(subtitle));
        EXPECT_THAT(view->hint()->text().toStdString(), HasSubstr(hint));
        EXPECT_THAT(parts().emptyHint->text().toStdString(), HasSubstr(empty));
        EXPECT_THAT(view->generateReason()->text().toStdString(), HasSubstr(reason));
        EXPECT_FALSE(parts().generate->isEnabled());
        EXPECT_TRUE(isShown(view->generateReason()));
    }
    scanShowing(twoControllers);
    EXPECT_TRUE(parts().generate->isEnabled());
    EXPECT_FALSE(isShown(view->generateReason()));
}

// At the default size every row's texts fit: the device and the place are
// read whole, the offer to check a companion doesn't push the row past the
// list, and the header's port count stands whole. With the log open the
// list still shows a few rows.
TEST_F(ContentViewTest, EveryRowFitsAtTheDefaultSize) {
    auto controller = intelXHC(makePorts(14));
    for (std::size_t index = 0; index < controller.ports.size(); ++index) {
        controller.ports[index].activeDevice = index % 2 ? "" : "Kingston DataTraveler 3.0";
        controller.ports[index].place = PortPlace{"back", "upper", "left"};
    }
    controller.ports.push_back(makePort("SS02", 18));
    controller.ports[1].companionKey = usbPortStableID(controller, controller.ports[14]);
    controller.ports[14].companionKey = usbPortStableID(controller, controller.ports[1]);
    scanShowing({controller});
    showActive();
    USBPortEditRow& offering = *sections()[0]->rows()[1];
    offering.checkbox()->click();
    QApplication::processEvents();

    const QWidget& viewport = *parts().list->viewport();
    auto fitsList = [&viewport](const QWidget& widget) {
        return QRect(widget.mapTo(&viewport, QPoint()), widget.size()).right() <= viewport.width();
    };
    auto isWhole = [](const QLabel& text) {
        return text.width() >= text.fontMetrics().horizontalAdvance(text.text());
    };
    for (USBPortEditRow* row : sections()[0]->rows()) {
        EXPECT_TRUE(fitsList(*row)) << row->port().name;
        for (const QLabel* text : {row->deviceLabel(), row->placeLabel()}) {
            EXPECT_TRUE(text->isHidden() || isWhole(*text))
                << row->port().name << " " << text->text().toStdString();
        }
    }
    const auto* header = sections()[0]->header();
    EXPECT_EQ(header->portCountLabel()->text(), "15 port(s)");
    EXPECT_TRUE(isWhole(*header->portCountLabel())) << "cut";
    ASSERT_TRUE(isShown(offering.companionOffer()));
    EXPECT_TRUE(fitsList(*header));

    parts().outcome->logToggle()->click();
    QApplication::processEvents();
    EXPECT_GE(viewport.height(), 3 * sections()[0]->rows()[0]->height()) << "a few rows beside the open log";
}

// The Desktop's name holds an identifier, which the copied log masks.
TEST_F(ContentViewTest, TheLogShowsAsItGrowsAndIsCopiedMasked) {
    const std::string uuid = "12345678-ABCD-1234-ABCD-1234567890AB";
    desktopFolder = home.path() / ("Desktop-" + uuid);
    OutcomePanel& outcome = *parts().outcome;
    model->prepareInitialChecks();
    EXPECT_FALSE(isShown(outcome.log())) << "collapsed at first";
    outcome.logToggle()->click();
    EXPECT_TRUE(isShown(outcome.log()));
    EXPECT_EQ(outcome.log()->toPlainText().toStdString(), model->logText());
    scanShowing(twoControllers);
    EXPECT_EQ(outcome.log()->toPlainText().toStdString(), model->logText()) << "new lines follow";

    outcome.copyLog()->click();
    const std::string copied = QApplication::clipboard()->text().toStdString();
    EXPECT_THAT(copied, HasSubstr("Target Desktop: " + (home.path() / "Desktop-XX-MASKED-UUID").string()));
    EXPECT_THAT(copied, testing::Not(HasSubstr(uuid)));
}

} // namespace
} // namespace korvane
