#include "ui/ContentView.h"

#include "ViewFixture.h"
#include "WindowFit.h"
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
#include <QKeyEvent>
#include <QLabel>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScrollBar>
#include <QTimer>
#include <QWheelEvent>
#include <QWindow>
#include <QtTest/qtestspontaneevent.h>
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
    // A button's label as shown, without its mnemonic's marker.
    static QString shown(const QPushButton& button) { return QString(button.text()).remove('&'); }
    std::vector<ControllerSection*> sections() const { return parts().list->sections(); }
    bool isListShown() const { return parts().list->isVisibleTo(view.get()); }

    std::unique_ptr<ContentView> view;
    const std::vector<USBControllerMap> twoControllers{intelXHC(makePorts(4, 1)),
                                                       makeController("XHC2", 0x1b73, 0x1100, makePorts(2))};
};

// Which controls are enabled in each state of the model the window can meet,
// as a row of flags: Reset Ports, Update IDs, Select All, Deselect All,
// Generate, Open ZIP and Donate; then the two labels that change and the
// badge; then the outcome line under the action row, the last action's only.
TEST_F(ContentViewTest, ControlsAndOutcomesFollowTheModelsState) {
    const std::string noNetwork =
        "pci.ids update failed: Could not resolve host | usb.ids update failed: Could not resolve host";
    const std::string notADirectory =
        "ERROR: " + (desktopFolder / "KorvaneGenerator_Work").string() + ": Not a directory";
    const std::tuple<const char*, std::function<void()>, const char*, const char*, std::string> states[] = {
        {"no controllers", [&] { scanShowing({}); }, "1100001", "Reset Ports|Update IDs|Ready", ""},
        {"loaded", [&] { scanShowing(twoControllers); }, "1111101", "Reset Ports|Update IDs|Ready", ""},
        // silent, but the label still says so
        {"scanning", [&] { model->refreshActiveUSBDevices(); }, "0011101", "Resetting...|Update IDs|Ready",
         ""},
        {"updating",
         [&] {
             scheduler.runUntilIdle();
             model->updateIDsDatabases();
         },
         "0011101", "Reset Ports|Updating IDs...|Ready", ""},
        {"running",
         [&] {
             scheduler.runUntilIdle();
             model->startCollection();
         },
         "0000000", "Reset Ports|Update IDs|Running", ""},
        {"completed", [&] { scheduler.runUntilIdle(); }, "1111111", "Reset Ports|Update IDs|Completed", ""},
        {"ZIP gone",
         [&] {
             std::filesystem::remove(*model->lastZipURL());
             parts().openZip->click();
         },
         "1111111", "Reset Ports|Update IDs|Completed",
         "Open ZIP found nothing: " + (desktopFolder / "Korvane.zip").string() + " was moved or deleted."},
        {"failed",
         [&] {
             // A file where the Desktop should be: the work folder can't be made.
             std::filesystem::remove_all(desktopFolder);
             std::ofstream(desktopFolder) << "not a folder";
             model->startCollection();
             scheduler.runUntilIdle();
         },
         "1111101", "Reset Ports|Update IDs|Failed", notADirectory},
        {"ids update",
         [&] {
             parts().updateIDs->click();
             scheduler.runUntilIdle();
         },
         "1111101", "Reset Ports|Update IDs|Failed", noNetwork},
        // The selection the run failed on is gone: a run would write something else.
        {"selection changed", [&] { parts().selectAll->click(); }, "1111101", "Reset Ports|Update IDs|Ready",
         ""},
        {"failed again",
         [&] {
             model->startCollection();
             scheduler.runUntilIdle();
         },
         "1111101", "Reset Ports|Update IDs|Failed", notADirectory},
        {"connector changed",
         [&] { model->setConnector(twoControllers[0], twoControllers[0].ports[0], 255); }, "1111101",
         "Reset Ports|Update IDs|Ready", notADirectory},
        {"next run", [&] { model->startCollection(); }, "0000000", "Reset Ports|Update IDs|Running", ""},
    };
    for (const auto& [name, enter, enabled, labels, outcome] : states) {
        enter();
        const auto& p = parts();
        std::string flags;
        for (const QPushButton* button :
             {p.resetPorts, p.updateIDs, p.selectAll, p.deselectAll, p.generate, p.openZip, p.donate}) {
            flags += button->isEnabled() ? '1' : '0';
        }
        EXPECT_EQ(flags, enabled) << name;
        EXPECT_EQ((shown(*p.resetPorts) + "|" + shown(*p.updateIDs) + "|" + p.badge->text()).toStdString(),
                  labels)
            << name;
        QStringList lines;
        for (const QLabel* line :
             {p.outcome->runError(), p.outcome->idsUpdateResult(), p.outcome->openZipProblem()}) {
            if (line->isVisibleTo(view.get())) {
                lines << line->text();
            }
        }
        EXPECT_EQ(lines.join("\n").toStdString(), outcome) << name;
        if (p.badge->state() == StatusBadge::State::failed) {
            EXPECT_EQ(p.badge->dotColor(), WindowStyle(view->palette()).errorText()) << "failed in red";
        }
    }
}

TEST_F(ContentViewTest, ScanNoticesShowUntilAScanHasNone) {
    scans.push_back({twoControllers, {"Connector types from the firmware need root."}});
    model->scanUSBPorts();
    scheduler.runUntilIdle();
    EXPECT_EQ(parts().scanNotices->text(), "Connector types from the firmware need root.");
    EXPECT_FALSE(parts().scanNotices->isHidden());
    scanShowing(twoControllers);
    EXPECT_TRUE(parts().scanNotices->isHidden());
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

TEST_F(ContentViewTest, CounterCountsThisScansPortsAndKeptKeysApart) {
    scanShowing(
        {intelXHC({makePort("HS01", 1, "Keyboard"), makePort("HS02", 2, "Mouse"), makePort("HS03", 3)})});
    EXPECT_EQ(parts().counter->text(), "2/3 selected");
    // HS02 and HS03 vanish; HS02's key stays selected.
    scans.push_back({{intelXHC({makePort("HS01", 1, "Keyboard")})}});
    model->refreshActiveUSBDevices();
    scheduler.runUntilIdle();
    EXPECT_EQ(parts().counter->text(), "1/1 selected \u00B7 1 kept for ports not on this machine");
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

TEST_F(ContentViewTest, SharedPortKeysShowTheSameChoices) {
    // Equal name and port data: one key for both rows.
    const auto controller = intelXHC({makePort("HS01", 1), makePort("HS01", 1)});
    scanShowing({controller});
    auto rows = sections()[0]->rows();
    ASSERT_EQ(rows.size(), 2u);
    rows[0]->checkbox()->click();
    EXPECT_TRUE(rows[1]->checkbox()->isChecked());
    pick(*rows[1]->connectorMenu(), "Internal");
    EXPECT_EQ(model->connectorFor(controller, controller.ports[0]), 255);
    EXPECT_EQ(rows[0]->connectorMenu()->currentText(), "Internal");
}

// More than 15 ports on a controller: Generate asks, and only "Generate
// anyway" starts the run.
TEST_F(ContentViewTest, GenerateAsksBeforeARunOverTheLimit) {
    scanShowing({intelXHC(makePorts(16))});
    parts().selectAll->click();
    model->dismissPortLimitWarning(); // the alert of reaching 15 is another
    QApplication::processEvents();
    for (const QString answer : {"Cancel", "Generate anyway"}) {
        QStringList buttons;
        QString text;
        QTimer::singleShot(0, [&] {
            auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
            ASSERT_NE(box, nullptr);
            text = box->text();
            for (auto* button : box->buttons()) {
                buttons << button->text().remove('&');
                if (button->text().remove('&') == answer) {
                    button->click();
                }
            }
        });
        parts().generate->click();
        EXPECT_THAT(text.toStdString(),
                    testing::StartsWith("XHC would be written with 16 ports, and macOS uses "
                                        "at most 15."));
        EXPECT_EQ(buttons.size(), 2) << buttons.join(", ").toStdString();
        EXPECT_EQ(model->isRunning(), answer != "Cancel") << answer.toStdString();
    }
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
    EXPECT_EQ(alert->text(), "USB Port Limit Warning");
    EXPECT_THAT(alert->informativeText().toStdString(),
                testing::StartsWith("This Intel XHC/XHCI controller has reached 15 selected USB ports."));
    ASSERT_EQ(alert->buttons().size(), 1);
    EXPECT_EQ(alert->buttons()[0]->text(), "&OK");

    alert->buttons()[0]->click();
    QApplication::processEvents();
    EXPECT_FALSE(model->showPortLimitWarning());
    EXPECT_EQ(model->selectedPortIDs().size(), 16u) << "the selection stays";
}

// What is typed is the choice; the warning stands while the model is "Mac"
// or not shaped like a Mac model, and like-named controllers are noted.
TEST_F(ContentViewTest, TheTargetModelFieldSetsTheChoiceAndWarnsWhereMacOSWouldIgnoreTheMap) {
    scanShowing({intelXHC(makePorts(1, 1)), makeController("XHC", 0x8086, 0x15e9, makePorts(1, 1))});
    QComboBox& field = *parts().targetModel->menu();
    const std::tuple<QString, QString, QString> rows[] = {
        {"", "no model found", "macOS applies this map only on a Mac of the model it names."},
        {std::string(65, 'M').c_str(), "no model found",
         "macOS applies this map only on a Mac of the model it names."}, // longer than SMBIOS holds: refused
        {"iMac19,1", "your choice", ""},
        {"Mac", "your choice", "macOS applies this map only on a Mac of the model it names."},
        {"My Mac", "your choice",
         "\u201CMy Mac\u201D isn't shaped like a Mac model (iMac19,1, MacBookPro15,2): macOS applies this "
         "map "
         "only on a Mac whose model is exactly this text."},
    };
    for (const auto& [typed, source, warning] : rows) {
        field.setEditText(typed);
        QApplication::processEvents();
        EXPECT_EQ(model->targetModelChoice(), typed.size() > 64 ? "" : typed.toStdString());
        EXPECT_EQ(parts().targetModel->sourceLabel()->text(), source) << typed.toStdString();
        EXPECT_EQ(parts().targetModelWarning->text(), warning) << typed.toStdString();
        EXPECT_EQ(parts().targetModelWarning->isVisibleTo(view.get()), !warning.isEmpty());
    }
    EXPECT_THAT(parts().personalityNotes->text().toStdString(),
                testing::HasSubstr("merge personality is named My Mac-XHC 8086_15E9"));
    view->setSettingsProblem("The target model can't be remembered for the next start: Not a directory");
    EXPECT_THAT(parts().targetModelWarning->text().toStdString(), testing::EndsWith("Not a directory"));
}

TEST_F(ContentViewTest, EachSectionSaysWhatARunWouldWriteForIt) {
    scanShowing(twoControllers);
    auto lines = [this] {
        std::vector<std::string> texts;
        for (auto* section : sections()) {
            texts.push_back(section->contribution()->text().toStdString());
        }
        return texts;
    };
    EXPECT_THAT(lines(), ElementsAre("1 port checked · 1 of 15", "support personality only · 0 of 15"));
    EXPECT_FALSE(sections()[0]->contribution()->font().bold());
    sections()[0]->header()->click(); // closed sections say it too
    parts().deselectAll->click();
    // Over the 15 ports macOS uses, in bold, with the template's ports the scan didn't see.
    EXPECT_THAT(lines(), ElementsAre(testing::StartsWith(
                                         "no port checked: the built-in template's 24 ports will be written "
                                         "· 24 of 15\nXHC: nothing is checked, so the built-in "
                                         "template is written, with ports the scan didn't see: "),
                                     "support personality only · 0 of 15"));
    EXPECT_TRUE(sections()[0]->contribution()->font().bold());
    parts().selectAll->click();
    EXPECT_THAT(lines(), ElementsAre("4 ports checked · 4 of 15", "2 ports checked · 2 of 15"));
}

// Tab walks the window as it reads: the editor's buttons, each section's
// header and rows, the action row, the log toggle, the footer. The keyboard
// starts at the first control once the first scan is in.
TEST_F(ContentViewTest, TheKeyboardFollowsTheReadingOrder) {
    view->show();
    QApplication::setActiveWindow(view.get());
    scans.push_back({{intelXHC(makePorts(1, 1)), makeController("XHC2", 0x1b73, 0x1100, makePorts(1))}});
    scheduler.runUntilIdle();
    QApplication::processEvents();

    std::vector<std::string> visited;
    for (int step = 0; step < 16; ++step) {
        QWidget* focused = QApplication::focusWidget();
        const auto* button = qobject_cast<const QPushButton*>(focused);
        visited.push_back((button ? shown(*button) : focused->accessibleName()).toStdString());
        QKeyEvent tab(QEvent::KeyPress, Qt::Key_Tab, Qt::NoModifier);
        QApplication::sendEvent(focused, &tab);
    }
    EXPECT_THAT(visited,
                ElementsAre("Reset Ports", "Update IDs", "Select All", "Deselect All", "XHC", "Selected",
                            "Connector", "Nickname", "XHC2", "Selected", "Connector", "Nickname",
                            "Generate Korvane.kext", "Map by plugging", "Target Mac model", "Log"));

    // Every button in sight has a mnemonic, and no two share one.
    std::set<QChar> keys;
    std::size_t shownButtons = 0;
    for (const QPushButton* button : view->findChildren<QPushButton*>()) {
        if (!button->isVisibleTo(view.get())) {
            continue;
        }
        ++shownButtons;
        const auto marker = button->text().indexOf('&');
        ASSERT_GE(marker, 0) << button->text().toStdString();
        keys.insert(button->text().at(marker + 1).toLower());
    }
    EXPECT_EQ(keys.size(), shownButtons);
}

// The wheel over the list scrolls it; a connector menu or the target model
// box that passes under the pointer changes only while it has the focus.
TEST_F(ContentViewTest, TheWheelScrollsTheListAndChangesAMenuOnlyWithTheFocus) {
    scanShowing({intelXHC(makePorts(30, 1))});
    view->show();
    QApplication::setActiveWindow(view.get());
    QApplication::processEvents();
    QScrollBar* scroll = parts().list->verticalScrollBar();
    ASSERT_GT(scroll->maximum(), 0);
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
    QComboBox& target = *parts().targetModel->menu();
    parts().resetPorts->setFocus();
    const QString connectorBefore = connector.currentText();
    turn(connector);
    EXPECT_EQ(connector.currentText(), connectorBefore) << "unfocused menu";
    EXPECT_GT(scroll->value(), 0) << "the list scrolled instead";
    EXPECT_FALSE(connector.hasFocus()) << "the wheel gives no focus";
    turn(target);
    EXPECT_EQ(model->targetModelChoice(), "") << "unfocused model box";

    connector.setFocus();
    turn(connector);
    EXPECT_NE(connector.currentText(), connectorBefore) << "focused menu";
}

TEST_F(ContentViewTest, ResetPortsAsksBeforeItDropsAnOpenedMapsSelection) {
    scanShowing(twoControllers);
    QStringList questions;
    bool answer = false;
    view->confirmReset = [&](const QString& question) {
        questions << question;
        return answer;
    };
    parts().resetPorts->click();
    scheduler.runUntilIdle();
    EXPECT_TRUE(questions.isEmpty()) << "nothing of a map's to lose";

    parts().selectAll->click();
    ASSERT_TRUE(model->saveMap(home.path() / "desk.korvanemap").succeeded);
    QApplication::processEvents();
    EXPECT_TRUE(parts().outcome->mapOutcome()->isVisibleTo(view.get()));
    parts().resetPorts->click();
    EXPECT_EQ(questions.size(), 1);
    EXPECT_FALSE(model->isScanningUSB()) << "kept";
    EXPECT_EQ(model->selectedPortIDs().size(), 6u);

    answer = true;
    parts().resetPorts->click();
    scans.push_back({twoControllers});
    scheduler.runUntilIdle();
    EXPECT_EQ(model->selectedPortIDs().size(), 1u) << "reset";
    EXPECT_FALSE(parts().outcome->mapOutcome()->isVisibleTo(view.get())) << "its outcome no longer holds";
}

// The header, the hint, the empty list and Generate's reason say what is true
// for the source the window shows.
TEST_F(ContentViewTest, TheTextsSayWhatIsTrueForTheSource) {
    using Kind = WindowSource::Kind;
    const std::tuple<WindowSource, const char*, const char*, const char*, const char*> rows[] = {
        {{Kind::liveLinux, {}},
         "as Linux sees them",
         "plugging one in",
         "Linux shows no USB 3",
         "no USB controller was found"},
        {{Kind::liveMac, {}},
         "this Mac's USB 3",
         "plugging one in",
         "in this Mac's registry",
         "no USB controller was found"},
        {{Kind::savedRegistry, "desk.ioreg"},
         "saved registry desk.ioreg",
         "it never changes",
         "The saved registry desk.ioreg lists no",
         "the saved registry lists no USB controller"},
    };
    for (const auto& [source, subtitle, hint, empty, reason] : rows) {
        view = std::make_unique<ContentView>(model, QIcon());
        view->setSource(source);
        scanShowing({});
        const std::string name = source.savedName.toStdString() + std::to_string(int(source.kind));
        EXPECT_THAT(view->subtitle()->text().toStdString(), testing::HasSubstr(subtitle)) << name;
        EXPECT_THAT(view->hint()->text().toStdString(), testing::HasSubstr(hint)) << name;
        EXPECT_THAT(parts().emptyHint->text().toStdString(), testing::HasSubstr(empty)) << name;
        EXPECT_THAT(view->generateReason()->text().toStdString(), testing::HasSubstr(reason)) << name;
        EXPECT_FALSE(parts().generate->isEnabled()) << name;
        EXPECT_TRUE(view->generateReason()->isVisibleTo(view.get())) << name;
        for (const QLabel* label : {view->subtitle(), view->hint(), parts().emptyHint}) {
            EXPECT_THAT(label->text().toStdString(), testing::Not(testing::HasSubstr("main app"))) << name;
        }
    }
    scanShowing(twoControllers);
    EXPECT_TRUE(parts().generate->isEnabled());
    EXPECT_FALSE(view->generateReason()->isVisibleTo(view.get()));
}

// At the default size every row's texts fit: the device and the place are
// read whole, the offer to check a companion doesn't push the row past the
// list, and the header's port count stands whole. With the log open the
// list still shows a few rows.
TEST_F(ContentViewTest, EveryRowFitsAtTheDefaultSize) {
    auto controller = intelXHC({});
    for (int number = 1; number <= 14; ++number) {
        auto port = makePort((number < 10 ? "HS0" : "HS") + std::to_string(number), number,
                             number % 2 ? "Kingston DataTraveler 3.0" : "");
        port.place = PortPlace{.panel = "back", .verticalPosition = "upper", .horizontalPosition = "left"};
        controller.ports.push_back(port);
    }
    controller.ports.push_back(makePort("SS02", 18));
    controller.ports[1].companionKey = usbPortStableID(controller, controller.ports[14]);
    controller.ports[14].companionKey = usbPortStableID(controller, controller.ports[1]);
    scanShowing({controller});
    view->show();
    QApplication::processEvents();
    USBPortEditRow& offering = *sections()[0]->rows()[1];
    offering.checkbox()->click();
    QApplication::processEvents();

    const QWidget& viewport = *parts().list->viewport();
    for (USBPortEditRow* row : sections()[0]->rows()) {
        const QRect inList(row->mapTo(&viewport, QPoint()), row->size());
        EXPECT_LE(inList.right(), viewport.width()) << row->port().name;
        for (const QLabel* text : {row->deviceLabel(), row->placeLabel()}) {
            if (!text->isHidden()) {
                EXPECT_GE(text->width(), text->fontMetrics().horizontalAdvance(text->text()))
                    << row->port().name << " " << text->text().toStdString();
            }
        }
    }
    const auto* header = sections()[0]->header();
    const QLabel* portCount = header->portCountLabel();
    EXPECT_EQ(portCount->text(), "15 port(s)");
    EXPECT_GE(portCount->width(), portCount->fontMetrics().horizontalAdvance(portCount->text())) << "cut";
    ASSERT_TRUE(offering.companionOffer()->isVisibleTo(view.get()));
    EXPECT_LE(QRect(header->mapTo(&viewport, QPoint()), header->size()).right(), viewport.width());

    parts().outcome->logToggle()->click();
    QApplication::processEvents();
    const int rowHeight = sections()[0]->rows()[0]->height();
    EXPECT_GE(viewport.height(), 3 * rowHeight) << "a few rows beside the open log";
}

TEST_F(ContentViewTest, TheWindowFitsA1366x768Screen) {
    scanShowing(twoControllers);
    expectWindowFitsScreen(model, {1366, 768});
}

class LogPanelTest : public ContentViewTest {
  protected:
    static constexpr const char* uuid = "12345678-ABCD-1234-ABCD-1234567890AB";
    void customise(CollectorEnvironment&) override {
        desktopFolder = home.path() / (std::string("Desktop-") + uuid);
        std::filesystem::create_directories(desktopFolder);
    }
};

TEST_F(LogPanelTest, TheLogShowsAsItGrowsAndIsCopiedMasked) {
    OutcomePanel& outcome = *parts().outcome;
    model->prepareInitialChecks();
    EXPECT_FALSE(outcome.log()->isVisibleTo(view.get())) << "collapsed at first";
    outcome.logToggle()->click();
    EXPECT_TRUE(outcome.log()->isVisibleTo(view.get()));
    EXPECT_EQ(outcome.log()->toPlainText().toStdString(), model->logText());
    scanShowing(twoControllers);
    EXPECT_EQ(outcome.log()->toPlainText().toStdString(), model->logText()) << "new lines follow";

    outcome.copyLog()->click();
    const std::string copied = QApplication::clipboard()->text().toStdString();
    EXPECT_THAT(copied,
                testing::HasSubstr("Target Desktop: " + (home.path() / "Desktop-XX-MASKED-UUID").string()));
    EXPECT_THAT(copied, testing::Not(testing::HasSubstr(uuid)));
}

} // namespace
} // namespace korvane
