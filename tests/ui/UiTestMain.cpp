// The widget tests' main: one QApplication for the whole run, made only when
// tests run (listing them needs no display). Without a display the widgets
// are made offscreen, a platform every Qt build carries.

#include <QApplication>
#include <cstdlib>
#include <gtest/gtest.h>
#include <memory>

namespace {

class QtApplicationEnvironment : public testing::Environment {
  public:
    QtApplicationEnvironment(int& argc, char** argv) : argc_(argc), argv_(argv) {}

    void SetUp() override {
        if (!std::getenv("DISPLAY") && !std::getenv("WAYLAND_DISPLAY")) {
            setenv("QT_QPA_PLATFORM", "offscreen", 0);
        }
#ifdef KORVANE_TEST_SCALE_FACTOR
        // The screen scale these tests are about, whoever runs them.
        setenv("QT_SCALE_FACTOR", KORVANE_TEST_SCALE_FACTOR, 1);
#endif
        application_ = std::make_unique<QApplication>(argc_, argv_);
    }
    void TearDown() override {
        application_.reset();
    }

  private:
    int& argc_;
    char** argv_;
    std::unique_ptr<QApplication> application_;
};

} // namespace

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    testing::AddGlobalTestEnvironment(new QtApplicationEnvironment(argc, argv));
    return RUN_ALL_TESTS();
}
