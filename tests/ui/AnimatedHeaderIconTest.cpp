#include "ui/AnimatedHeaderIcon.h"

#include "support/TempFolder.h"

#include <QApplication>
#include <QImage>
#include <fstream>
#include <gtest/gtest.h>

namespace korvane {
namespace {

class AnimatedHeaderIconTest : public testing::Test {
  protected:
    static QColor centre(const QIcon& icon) {
        return icon.pixmap(QSize(48, 48), 1.0).toImage().pixelColor(24, 24);
    }
    TempFolder resources;
};

TEST_F(AnimatedHeaderIconTest, ResourceFileComesBeforeTheBuiltInIcon) {
    const QIcon builtIn = appIcon(resources.path());
    ASSERT_FALSE(builtIn.isNull()) << "the program carries its own icon";
    std::ofstream(resources.path() / "AppIcon.svg")
        << R"(<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 10 10"><rect width="10" height="10" fill="#ff0000"/></svg>)";
    EXPECT_EQ(centre(appIcon(resources.path())), QColor(Qt::red));
    EXPECT_NE(centre(builtIn), QColor(Qt::red));
}

} // namespace
} // namespace korvane
