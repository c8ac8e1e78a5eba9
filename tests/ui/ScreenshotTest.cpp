// The window as a user at a scale-2 screen sees it, once per palette, measured
// on the rendered pixels: what the style really paints, not what the palette
// says. Its main sets QT_SCALE_FACTOR=2 (tests/ui/CMakeLists.txt); the
// pictures are left in the working folder for a look.

#include "ViewFixture.h"
#include "ui/AppMenus.h"
#include "ui/Contrast.h"
#include "ui/ControllerList.h"
#include "ui/ControllerSection.h"
#include "ui/KorvaneGeneratorApp.h"
#include "ui/OutcomePanel.h"
#include "ui/TargetModelField.h"
#include "ui/USBPortEditRow.h"
#include "ui/VisibleControlStyle.h"
#include "ui/WindowStyle.h"

#include <QCheckBox>
#include <QImage>
#include <QLabel>
#include <QMainWindow>
#include <QMenuBar>
#include <QPushButton>
#include <QStyle>

namespace korvane {
namespace {

// The pixels of `area` for which `matches` holds: how many, and where.
struct Pixels {
    int count = 0;
    QRect bounds;
};
Pixels pixelsWhere(const QImage& image, const QRect& area, const std::function<bool(QColor)>& matches) {
    Pixels found;
    for (int y = area.top(); y <= area.bottom(); ++y) {
        for (int x = area.left(); x <= area.right(); ++x) {
            if (matches(image.pixelColor(x, y))) {
                ++found.count;
                found.bounds |= QRect(x, y, 1, 1);
            }
        }
    }
    return found;
}

// Pixels of `area` contrasting at least `minimum` with `background`.
int contrasting(const QImage& image, const QRect& area, const QColor& background, double minimum) {
    return pixelsWhere(image, area, [&](QColor pixel) { return contrastRatio(pixel, background) >= minimum; })
        .count;
}

class ScreenshotTest : public ViewFixture, public testing::WithParamInterface<bool> {
  public:
    void SetUp() override {
        ViewFixture::SetUp();
        VisibleControlStyle::install(isDark());
        if (!isDark()) {
            QApplication::setPalette(QApplication::style()->standardPalette());
        }
        makeView();
        view->show();
        scanShowing({makeController("XHC1", 0x8086, 0xa36d, makePorts(4, 1)),
                     makeController("XHC2", 0x1b73, 0x1100, makePorts(2))});
        makeDesktopAFile(); // a failed run, for its error line
        model->startCollection();
        scheduler.runUntilIdle();
        view->parts().outcome->logToggle()->click();
        showActive();
    }

    bool isDark() const { return GetParam(); }
    // `widget` as painted, in the window's device pixels.
    QImage picture(QWidget& widget) const { return widget.grab().toImage(); }
};

TEST_P(ScreenshotTest, IconsTextAndBordersHoldAtScaleTwo) {
    const auto& parts = view->parts();
    const QImage window = picture(*view);
    ASSERT_EQ(window.devicePixelRatio(), 2.0);
    window.save(QString("korvane-generator-%1@2x.png").arg(isDark() ? "dark" : "light"));
    const WindowStyle style(QApplication::palette());

    // The icon alone on its button (the text taken away for good) fills its
    // size and stands centred, not shrunk into a corner.
    QPushButton& reset = *parts.resetPorts;
    reset.setText("");
    const QImage button = picture(reset);
    const QColor fill = button.pixelColor(3, button.height() / 2);
    const QRect glyph = pixelsWhere(button, button.rect(), [&](QColor pixel) {
                            return contrastRatio(pixel, fill) > 1.5;
                        }).bounds;
    EXPECT_GE(glyph.height(), qRound(reset.iconSize().height() * 2 * 0.6)) << "the icon's height in pixels";
    EXPECT_NEAR(glyph.center().y(), button.height() / 2, 4) << "the icon is centred";

    // The primary action's text on its painted fill.
    const QImage generate = picture(*parts.generate);
    EXPECT_GE(contrastRatio(parts.generate->palette().color(QPalette::ButtonText),
                            generate.pixelColor(8, generate.height() / 2)),
              textContrastMinimum);

    // An unchecked box's border against the row it stands on.
    USBPortEditRow& row = *parts.list->sections()[0]->rows()[1];
    ASSERT_FALSE(row.checkbox()->isChecked());
    const QImage rowImage = picture(row);
    const QRect box(row.checkbox()->geometry().topLeft() * 2, row.checkbox()->size() * 2);
    const QColor rowBackground = rowImage.pixelColor(box.right() + 6, box.center().y());
    EXPECT_GT(contrasting(rowImage, box, rowBackground, borderContrastMinimum), 0) << "checkbox border";

    // The error line's text against the window.
    QLabel& error = *parts.outcome->runError();
    ASSERT_TRUE(error.isVisible());
    const QImage errorImage = picture(error);
    EXPECT_GT(contrasting(errorImage, errorImage.rect(), style.windowBackground(), textContrastMinimum), 0);

    // The focus shows on whatever has it, also when no Tab moved it there.
    row.checkbox()->setFocus(Qt::MouseFocusReason);
    QApplication::processEvents();
    const QColor ring = WindowStyle(row.checkbox()->palette()).focusRing();
    auto ringPixels = [&](const QImage& image) {
        return pixelsWhere(image, box, [&](QColor pixel) { return pixel.rgb() == ring.rgb(); }).count;
    };
    EXPECT_GT(ringPixels(picture(row)), ringPixels(rowImage) + 20) << "a focus ring";

    // No text below 9 points anywhere.
    for (const QWidget* widget : view->findChildren<QWidget*>()) {
        EXPECT_GE(widget->font().pointSizeF(), WindowStyle::minimumPointSize)
            << widget->metaObject()->className() << " " << widget->objectName().toStdString();
    }
}

// The window as the application makes it, at its smallest, on a 1920x1080
// screen at scale 2 (960x540 points): it fits with room for a title bar and a
// desktop's bar, and every control of the content is inside it, with the log
// closed and open.
TEST_P(ScreenshotTest, TheWindowFitsA1920x1080ScreenAtScaleTwo) {
    view.reset();
    const QSize points(960, 540);
    constexpr int titleAndDesktopBars = 64;
    QMainWindow window;
    auto* content = new ContentView(model, QIcon());
    window.setCentralWidget(content);
    AppMenus::install(window);
    content->setMinimumSize(KorvaneGeneratorApp::minimumWidth, KorvaneGeneratorApp::minimumHeight);
    const QSize first = KorvaneGeneratorApp::firstSize(points - QSize(0, titleAndDesktopBars - 40),
                                                       window.menuBar()->sizeHint().height());
    window.resize(first);
    window.show();
    QApplication::processEvents();
    for (const bool isLogOpen : {false, true}) {
        if (isLogOpen) {
            content->parts().outcome->logToggle()->click();
        }
        window.resize(window.minimumSizeHint().expandedTo(window.minimumSize()));
        QApplication::processEvents();
        const QSize smallest = window.size();
        EXPECT_LE(smallest.width(), points.width()) << "log open: " << isLogOpen;
        EXPECT_LE(smallest.height() + titleAndDesktopBars, points.height()) << "log open: " << isLogOpen;
        const auto buttons = content->findChildren<QAbstractButton*>();
        std::vector<QWidget*> controls(buttons.begin(), buttons.end());
        controls.push_back(content->parts().targetModel->menu());
        for (QWidget* control : controls) {
            const QRect shown(control->mapTo(&window, QPoint()), control->size());
            const auto* button = qobject_cast<QAbstractButton*>(control);
            EXPECT_TRUE(!control->isVisibleTo(content) || content->parts().list->isAncestorOf(control) ||
                        window.rect().contains(shown))
                << (button ? button->text() : control->accessibleName()).toStdString() << " at " << shown.x()
                << "," << shown.y() << " in " << smallest.width() << "x" << smallest.height()
                << ", log open: " << isLogOpen;
        }
    }
    // The first size leaves the bars their room wherever the smallest does.
    EXPECT_LE(first.height() + titleAndDesktopBars - 40, points.height());
}

INSTANTIATE_TEST_SUITE_P(Palettes, ScreenshotTest, testing::Bool(),
                         [](const testing::TestParamInfo<bool>& palette) {
                             return palette.param ? "dark" : "light";
                         });

} // namespace
} // namespace korvane
