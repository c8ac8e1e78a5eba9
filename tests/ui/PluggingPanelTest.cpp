#include "ui/PluggingPanel.h"

#include "ViewFixture.h"
#include "mapfile/MapFileCodec.h"
#include "ui/ContentView.h"
#include "ui/ControllerList.h"
#include "ui/ControllerSection.h"
#include "ui/USBPortEditRow.h"
#include "ui/VisibleControlStyle.h"

#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QStyle>
#include <QTest>
#include <cstdlib>
#include <gmock/gmock.h>

namespace korvane {
namespace {

using testing::HasSubstr;

USBControllerMap xhc1(const std::map<std::string, std::string>& devices) {
    return pairedXHC1(4, devices);
}

class PluggingPanelTest : public ViewFixture {
  public:
    void SetUp() override {
        // A session without an open map saves in the data folder: this home's.
        const char* was = std::getenv("XDG_DATA_HOME");
        dataHome_ = was ? std::optional<std::string>(was) : std::nullopt;
        setenv("XDG_DATA_HOME", (home.path() / "data").c_str(), 1);
        ViewFixture::SetUp();
        if (std::getenv("KORVANE_PLUGGING_PICTURE")) {
            VisibleControlStyle::install(false);
            QApplication::setPalette(QApplication::style()->standardPalette());
        }
        view = std::make_unique<ContentView>(model, QIcon());
        view->resize(900, 680);
        view->showPluggingSummary = [this](const QString& text) { summary = text; };
    }
    void TearDown() override {
        view.reset();
        if (dataHome_) {
            setenv("XDG_DATA_HOME", dataHome_->c_str(), 1);
        } else {
            unsetenv("XDG_DATA_HOME");
        }
    }

    // A device arrives: the hotplug event, then the rescan after the debounce.
    void plug(const std::string& port, const std::string& device) {
        devices[port] = device;
        scans.push_back({{xhc1(devices)}});
        hotplug->onChange();
        scheduler.advance(Scheduler::Seconds{0.2});
        QApplication::processEvents();
    }

    std::unique_ptr<ContentView> view;
    std::map<std::string, std::string> devices;
    QString summary;

  private:
    std::optional<std::string> dataHome_;
};

struct PluggingCase {
    std::string title;
    bool hasMapOpen;
    std::string name;
    std::string reply;
    std::string socket; // in the summary
};

// Enter the mode, a device arrives, the panel names its port and asks for the
// name; the name is given; Done leaves the mode with the socket saved.
TEST_F(PluggingPanelTest, ADeviceThatArrivesNamesItsSocketAndDoneKeepsIt) {
    const std::vector<PluggingCase> cases = {
        {"a name, into the open map", true, "rear", "Named \"rear\".", "\"rear\": XHC1 HS01, XHC1 SS01"},
        {"no name, into a new map in the data folder", false, "", "The socket of XHC1 SS01 has no name.",
         "(no name): XHC1 HS01, XHC1 SS01"},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.title);
        // A model and window of its own for each row.
        TearDown();
        SetUp();
        devices.clear();
        view->show();
        QApplication::setActiveWindow(view.get());
        scanShowing({xhc1(devices)});
        model->startUSBHotplugMonitoring();
        const auto openMap = home.path() / "open.korvanemap";
        if (row.hasMapOpen) {
            ASSERT_TRUE(model->saveMap(openMap).succeeded);
        }
        PluggingPanel& panel = *view->parts().plugging;

        ASSERT_FALSE(panel.isVisible());
        view->parts().mapByPlugging->click();
        ASSERT_TRUE(panel.isVisible());
        EXPECT_FALSE(view->parts().mapByPlugging->isEnabled()) << "one session at a time";
        EXPECT_THAT(panel.progress()->text().toStdString(), HasSubstr("0 sockets found"));

        plug("SS01", "Stick");
        EXPECT_EQ(panel.seen()->text().toStdString(), "Seen: SS01 (with HS01) on XHC1: Stick");
        EXPECT_TRUE(panel.name()->hasFocus());
        // Its row stands out: SS01 is the fifth of the controller's rows.
        const auto& rows = view->parts().list->sections().front()->rows();
        ASSERT_EQ(rows.size(), 8u);
        for (std::size_t index = 0; index < rows.size(); ++index) {
            EXPECT_EQ(rows[index]->autoFillBackground(), index == 4) << index;
        }

        QTest::keyClicks(panel.name(), QString::fromStdString(row.name));
        // scripts/screenshot.sh takes the docs' picture here.
        if (const char* picture = std::getenv("KORVANE_PLUGGING_PICTURE"); picture && row.hasMapOpen) {
            QApplication::processEvents();
            ASSERT_TRUE(view->grab().save(picture));
        }
        QTest::keyClick(panel.name(), Qt::Key_Return);
        EXPECT_THAT(panel.seen()->text().toStdString(), HasSubstr(row.reply));
        EXPECT_FALSE(panel.name()->isEnabled()) << "nothing more to name";
        EXPECT_THAT(panel.progress()->text().toStdString(), HasSubstr("1 socket found"));
        EXPECT_THAT(panel.progress()->text().toStdString(), HasSubstr("XHC1 2 of 15"));

        const auto saved = panel.mapFile();
        panel.done()->click();
        EXPECT_FALSE(panel.isVisible());
        EXPECT_TRUE(view->parts().mapByPlugging->isEnabled());
        EXPECT_FALSE(rows[4]->autoFillBackground()) << "the mark goes with the mode";
        EXPECT_THAT(summary.toStdString(), HasSubstr("Map saved to " + saved.string()));
        EXPECT_THAT(summary.toStdString(), HasSubstr(row.socket));
        if (row.hasMapOpen) {
            EXPECT_EQ(saved, openMap);
        } else {
            EXPECT_EQ(saved.parent_path(), home.path() / "data" / "KorvaneGenerator" / "Maps");
        }
        // Leaving the mode keeps what was learned: both halves stay checked.
        EXPECT_EQ(model->selectedPortIDs().size(), 2u);
        const auto map = readMapFile(saved);
        ASSERT_TRUE(map.map) << map.reason;
        EXPECT_EQ(map.map->session, model->session());
        scheduler.runUntilIdle();
    }
}

} // namespace
} // namespace korvane
