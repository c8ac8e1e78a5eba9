#include "ui/PluggingPanel.h"

#include "ViewFixture.h"
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

using PluggingPanelTest = ViewFixture;

// Enter the mode, a device arrives, the panel names its port and asks for the
// name; the name is given; Done leaves the mode with the socket saved: first
// into a new map in the data folder, then, that map now open, into it.
TEST_F(PluggingPanelTest, ADeviceThatArrivesNamesItsSocketAndDoneKeepsIt) {
    // A session without an open map saves in the data folder: this home's.
    // Each test sets it anew, and nothing else in the window reads it.
    setenv("XDG_DATA_HOME", (home.path() / "data").c_str(), 1);
    if (std::getenv("KORVANE_PLUGGING_PICTURE")) {
        VisibleControlStyle::install(false);
        QApplication::setPalette(QApplication::style()->standardPalette());
    }
    makeView();
    std::string summary;
    view->showPluggingSummary = [&summary](const QString& text) { summary = text.toStdString(); };
    std::map<std::string, std::string> devices;
    // A stick arrives in `port`, and the window sees the rescan.
    auto plug = [&](const std::string& port) {
        devices[port] = "Stick";
        hotplugShowing({pairedXHC1(4, devices)});
        QApplication::processEvents();
    };
    showActive();
    scanShowing({pairedXHC1(4, devices)});
    model->startUSBHotplugMonitoring();
    PluggingPanel& panel = *view->parts().plugging;
    const auto& rows = view->parts().list->sections().front()->rows();
    ASSERT_EQ(rows.size(), 8u);
    struct Round {
        std::string port;
        std::size_t row; // SS01 is the fifth of the controller's rows
        std::string seen, name, reply, socket, found;
    };
    const Round rounds[] = {
        {"SS01", 4, "Seen: SS01 (with HS01) on XHC1: Stick", "rear", "Named \"rear\".",
         "\"rear\": XHC1 HS01, XHC1 SS01", "1 socket found"},
        {"SS02", 5, "Seen: SS02 (with HS02) on XHC1: Stick", "", "The socket of XHC1 SS02 has no name.",
         "(no name): XHC1 HS02, XHC1 SS02", "2 sockets found"},
    };
    std::vector<std::filesystem::path> maps;
    for (const auto& [port, row, seen, name, reply, socket, found] : rounds) {
        SCOPED_TRACE(port);
        ASSERT_FALSE(panel.isVisible());
        view->parts().mapByPlugging->click();
        ASSERT_TRUE(panel.isVisible());
        EXPECT_FALSE(view->parts().mapByPlugging->isEnabled()) << "one session at a time";

        plug(port);
        EXPECT_EQ(panel.seen()->text().toStdString(), seen);
        EXPECT_TRUE(panel.name()->hasFocus());
        for (std::size_t index = 0; index < rows.size(); ++index) {
            EXPECT_EQ(rows[index]->autoFillBackground(), index == row) << "its row stands out " << index;
        }
        QTest::keyClicks(panel.name(), QString::fromStdString(name));
        // scripts/screenshot.sh takes the docs' picture here.
        if (const char* picture = std::getenv("KORVANE_PLUGGING_PICTURE"); picture && maps.empty()) {
            QApplication::processEvents();
            ASSERT_TRUE(view->grab().save(picture));
        }
        QTest::keyClick(panel.name(), Qt::Key_Return);
        EXPECT_THAT(panel.seen()->text().toStdString(), HasSubstr(reply));
        EXPECT_FALSE(panel.name()->isEnabled()) << "nothing more to name";
        EXPECT_THAT(panel.progress()->text().toStdString(), HasSubstr(found));

        maps.push_back(panel.mapFile());
        panel.done()->click();
        EXPECT_FALSE(panel.isVisible());
        EXPECT_TRUE(view->parts().mapByPlugging->isEnabled());
        EXPECT_FALSE(rows[row]->autoFillBackground()) << "the mark goes with the mode";
        EXPECT_THAT(summary, HasSubstr("Map saved to " + maps.back().string()));
        EXPECT_THAT(summary, HasSubstr(socket));
        EXPECT_EQ(model->selectedPortIDs().size(), 2 * (row - 3))
            << "both halves of each socket stay checked";
        scheduler.runUntilIdle();
    }
    EXPECT_EQ(maps[0].parent_path(), home.path() / "data" / "KorvaneGenerator" / "Maps");
    EXPECT_EQ(maps[1], maps[0]);
}

} // namespace
} // namespace korvane
