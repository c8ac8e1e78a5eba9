// The widget tests' main: one QApplication for the whole run. Without a
// display the widgets are made offscreen, a platform every Qt build carries.

#include <QApplication>
#include <cstdlib>
#include <gtest/gtest.h>

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    if (!std::getenv("DISPLAY") && !std::getenv("WAYLAND_DISPLAY")) {
        setenv("QT_QPA_PLATFORM", "offscreen", 0);
    }
#ifdef KORVANE_TEST_SCALE_FACTOR
    // The screen scale these tests are about, whoever runs them.
    setenv("QT_SCALE_FACTOR", KORVANE_TEST_SCALE_FACTOR, 1);
#endif
    QApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
