// The widget tests' main: one QApplication for the whole run, made only when
// tests run (listing them needs no display).

#include <QApplication>
#include <cstdlib>
#include <gtest/gtest.h>
#include <memory>

namespace {

class QtApplicationEnvironment : public testing::Environment {
  public:
    QtApplicationEnvironment(int& argc, char** argv) : argc_(argc), argv_(argv) {}

    void SetUp() override {
        // Without a platform Qt would abort the run; the tests skip instead.
        if (std::getenv("QT_QPA_PLATFORM") || std::getenv("DISPLAY") || std::getenv("WAYLAND_DISPLAY")) {
            application_ = std::make_unique<QApplication>(argc_, argv_);
        }
    }
    void TearDown() override { application_.reset(); }

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
